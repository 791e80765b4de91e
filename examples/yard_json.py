"""JSON for people: whole numbers without a fraction, a list of plain values on one line."""

import json


def to_json(value):
    return _text(value, "") + "\n"


def _text(value, indent):
    deeper = indent + "  "
    if isinstance(value, dict) and value:
        members = (f"{json.dumps(key)}: {_text(item, deeper)}" for key, item in value.items())
        return "{\n" + ",\n".join(deeper + member for member in members) + f"\n{indent}}}"
    if isinstance(value, (list, tuple)):
        if not any(isinstance(item, (dict, list, tuple)) for item in value):
            return "[" + ", ".join(_text(item, "") for item in value) + "]"
        return "[\n" + ",\n".join(deeper + _text(item, deeper) for item in value) + f"\n{indent}]"
    if isinstance(value, float) and value.is_integer():
        return str(int(value))
    return json.dumps(value)
