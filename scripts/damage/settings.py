"""Damaged settings files, through the whole program."""
import mutate
import runs

SCENE = runs.ROOT / "tests/golden/winding.scene.json"
# What else may stand in such a file, and must survive.
FOREIGN = b'\n; a remark of the user\'s\n[HKEY_LOCAL_MACHINE\\Software\\Other]\n"Kept"="yes"\n'
# Values in quotes that leave the file readable, and numbers behind "dword:".
TEXTS = (b"", b"0", b"-1", b"1e39", b"-1e-39", b"nan", b"inf", b"1,5", b"9" * 5000, b"\xc3\xa9",
         b"/dev/null", b"\\\\nowhere\\a.cxp")
NUMBERS = (b"00000000", b"00000001", b"7fffffff", b"ffffffff", b"80000000")
UNREADABLE = b"settings are neither read nor saved"
SPOILT = b"are not saved"


def write_settings(program, folder):
    """The settings that an export with the initial options saves, and something foreign."""
    folder.mkdir(parents=True, exist_ok=True)
    outcome = runs.call([program, "export", SCENE, "first.kob", "--settings", "first.reg"], folder)
    if outcome.status != 0:
        raise SystemExit(f"damage: no settings to damage: {outcome.errors!r}")
    return (folder / "first.reg").read_bytes() + FOREIGN


def damage(whole, rng):
    """Half of the copies have other values only, so that they are read and used."""
    if rng.random() < 0.5:
        return mutate.damage(whole, rng)
    lines = whole.splitlines(keepends=True)
    values = [i for i, line in enumerate(lines) if line.startswith(b'"')]
    for i in rng.sample(values, rng.choice((1, 2, 5))):
        name, old = lines[i].split(b"=", 1)
        new = b'"%s"' % rng.choice(TEXTS)
        if old.startswith(b"dword:") and rng.random() < 0.9:
            new = b"dword:" + rng.choice(NUMBERS)
        lines[i] = name + b"=" + new + b"\n"
    return b"".join(lines)


def fault_of_file(before, after, outcome, again):
    """A settings file is never lost: one that can't be read is told of and kept as it is; in one
    that can, each line that has none of our values is still there."""
    told = UNREADABLE in outcome.errors
    if told and after != before:
        return "the file was said to be left alone, and has changed"
    if not told and UNREADABLE in again.errors:
        return f"it was readable, and is not any more: {again.errors[:500]!r}"
    if not told and SPOILT not in outcome.errors:
        kept = set(line for line in before.splitlines() if not line.startswith(b'"'))
        lost = kept - set(after.splitlines())
        if before and lost:
            return f"lines were lost: {sorted(lost)[:5]!r}"
    return ""


def run(campaign, programs, numbers):
    program = programs.chosen
    whole = write_settings(program, runs.KEPT / "first-settings")

    def attempt(_, rng, folder):
        before = damage(whole, rng)
        path = folder / "settings.reg"
        path.write_bytes(before)
        fault, how, outcome = runs.fault_of_export(program, folder, SCENE,
                                                   ["--settings", path.name])
        again = runs.call([program, "export", SCENE, "again.kob", "--settings", path.name,
                           "--quiet"], folder)
        fault = fault or runs.fault_of_end(again, (0, 1, 4))
        fault = fault or fault_of_file(before, path.read_bytes(), outcome, again)
        kind = "unreadable" if UNREADABLE in outcome.errors else "readable"
        return kind, how, fault

    return campaign.run(numbers, attempt)
