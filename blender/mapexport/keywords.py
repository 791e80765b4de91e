"""The keywords of an object: how they are written in its custom property userProperties."""

PROPERTY = "userProperties"


def register() -> None:
    """Nothing yet."""


def unregister() -> None:
    """Nothing yet."""
