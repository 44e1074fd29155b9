"""The strip-markup rule in Python, for the Python peers (lxml, the xmllint split)."""


def strip_markup(text):
    """CR gone, blanks trimmed, LF and TAB gone; every tag dropped, the trimmed pieces joined."""
    text = text.replace("\r", "").strip(" ").replace("\n", "").replace("\t", "")
    if "<" not in text:
        return text
    pieces = []
    position = 0
    while (open_at := text.find("<", position)) >= 0:
        pieces.append(text[position:open_at])
        position = text.index(">", open_at) + 1
    pieces.append(text[position:])
    return " ".join(piece.strip(" ") for piece in pieces if piece.strip(" "))
