"""Changes what Blender evaluates for as long as an export gathers it."""

import contextlib
from collections.abc import Iterable, Iterator
from typing import Any

import bpy


@contextlib.contextmanager
def edit_mode_left(context: bpy.types.Context) -> Iterator[None]:
    """Leaves the modes in which what is edited is not evaluated as the mesh that is drawn."""
    active = context.view_layer.objects.active
    mode = active.mode if active is not None else "OBJECT"
    is_editing = mode in {"EDIT", "SCULPT"}
    if is_editing:
        bpy.ops.object.mode_set(mode="OBJECT")
    try:
        yield
    finally:
        if is_editing:
            bpy.ops.object.mode_set(mode=mode)


@contextlib.contextmanager
def everything_shown(view_layer: bpy.types.ViewLayer) -> Iterator[None]:
    """Shows all objects of the view layer: those that are hidden, too."""
    hidden = [item for item in view_layer.objects if item.hide_get()]
    for item in hidden:
        item.hide_set(False)
    places = list(_below(view_layer.layer_collection))
    try:
        with _set(places, "hide_viewport"):
            with _set([place.collection for place in places], "hide_viewport"):
                with _set(view_layer.objects, "hide_viewport"):
                    yield
    finally:
        for item in hidden:
            item.hide_set(True)


@contextlib.contextmanager
def modifiers_off(objects: Iterable[bpy.types.Object]) -> Iterator[None]:
    with _set([one for item in objects for one in item.modifiers], "show_viewport"):
        yield


@contextlib.contextmanager
def _set(holders: Iterable[Any], name: str) -> Iterator[None]:
    """Sets a property to false where it is true."""
    changed = [holder for holder in holders if getattr(holder, name)]
    for holder in changed:
        setattr(holder, name, False)
    try:
        yield
    finally:
        for holder in changed:
            setattr(holder, name, True)


def _below(place: bpy.types.LayerCollection) -> Iterator[bpy.types.LayerCollection]:
    yield place
    for child in place.children:
        yield from _below(child)
