"""The one exception for what goes wrong in an export and is said to the user."""


class ExportError(Exception):
    """Its text is one sentence."""
