"""Damages bytes and texts; every choice comes from the random generator that is handed in."""
import io
import re
import zipfile

NUMBERS = (b"0", b"-1", b"1e39", b"nan", b"-inf", b"4294967295", b"2147483648", b"0.00000001",
           b"1" * 400, b"-" + b"9" * 60 + b".5", b"")
FIELDS = (0, 1, 0x7FFFFFFF, 0xFFFFFFFF)
NUMBER = re.compile(rb"-?\d+(?:\.\d+)?(?:[eE][-+]?\d+)?")


def flip_bits(data, rng):
    for _ in range(rng.choice((1, 1, 2, 8))):
        data[rng.randrange(len(data))] ^= 1 << rng.randrange(8)


def overwrite(data, rng):
    at = rng.randrange(len(data))
    for i in range(at, min(at + rng.choice((1, 2, 4, 32, 256)), len(data))):
        data[i] = rng.choice((0, 0xFF, 0x7F, ord("-"), ord("9"), ord("\n"), rng.randrange(256)))


def cut(data, rng):
    del data[rng.randrange(len(data)):]


def block(data, rng):
    at = rng.randrange(len(data))
    return at, min(at + rng.choice((1, 4, 16, 64, 1024)), len(data))


def remove(data, rng):
    start, end = block(data, rng)
    del data[start:end]


def duplicate(data, rng):
    start, end = block(data, rng)
    data[start:start] = data[start:end] * rng.choice((1, 1, 2, 50))


def set_field(data, rng):
    """A 32-bit number, which in most binary formats is a count, a size or an index."""
    if len(data) < 4:
        return
    at = rng.randrange(len(data) - 3)
    data[at:at + 4] = rng.choice(FIELDS).to_bytes(4, "little")


def set_number(data, rng):
    """Text with other numbers is still well-formed, so that this gets further than the others."""
    numbers = list(NUMBER.finditer(data))
    for found in sorted(rng.sample(numbers, min(len(numbers), rng.choice((1, 1, 5, 50)))),
                        key=lambda found: -found.start()):
        data[found.start():found.end()] = rng.choice(NUMBERS)


def is_text(data):
    return b"\0" not in data[:4096]


def damage(content, rng):
    """A damaged copy of `content`, which is not the same."""
    kinds = [flip_bits, overwrite, cut, remove, duplicate]
    kinds += [set_number] * 3 if is_text(content) else [set_field] * 3
    while True:
        data = bytearray(content)
        for _ in range(rng.choice((1, 1, 1, 2, 5))):
            if data:
                rng.choice(kinds)(data, rng)
        if data != content:
            return bytes(data)


def damage_zip(content, rng):
    """Half of the copies are damaged within the archive, whose checksums are right again."""
    if rng.random() < 0.5:
        return damage(content, rng)
    with zipfile.ZipFile(io.BytesIO(content)) as archive:
        parts = [(name, archive.read(name)) for name in archive.namelist()]
    chosen = rng.randrange(len(parts))
    out = io.BytesIO()
    with zipfile.ZipFile(out, "w", zipfile.ZIP_DEFLATED) as archive:
        for i, (name, data) in enumerate(parts):
            # A fixed date, so that the same seed gives the same bytes.
            info = zipfile.ZipInfo(name, (1980, 1, 1, 0, 0, 0))
            info.compress_type = zipfile.ZIP_DEFLATED
            archive.writestr(info, damage(data, rng) if i == chosen and data else data)
    return out.getvalue()
