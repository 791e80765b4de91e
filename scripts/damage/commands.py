"""Damaged model files through the commands that read them, in the whole program."""
import models
import mutate
import runs

OTHERS = (["convert", "{}", "out.glb"], ["convert", "{}", "out.gltf"], ["convert", "{}", "out.obj"],
          ["convert", "{}", "out.ply"], ["convert", "{}", "out.stl"],
          ["view", "{}", "-o", "out.html"])
WITHOUT_PAGE = b"was built without the page"
MOST_ERRORS = 51  # 50, and that there may be more


def damage(content, rng):
    """Mostly one field, so that half of the copies get past the frame of the file."""
    if rng.random() < 0.5:
        data = bytearray(content)
        mutate.set_field(data, rng)
        return bytes(data)
    return mutate.damage(content, rng)


def fault_of_inspect(text, document):
    """What is wrong with how `inspect` and `inspect --json` ended."""
    for outcome in (text, document):
        fault = runs.fault_of_end(outcome, (0, 1, 4))
        if fault:
            return fault
        if (outcome.status == 1) != (outcome.out == b""):
            return f"status {outcome.status} with {len(outcome.out)} bytes of output"
        if runs.error_lines(outcome) > MOST_ERRORS:
            return f"{runs.error_lines(outcome)} errors"
    if (text.status, text.errors) != (document.status, document.errors):
        return "text and JSON come with different messages"
    if any(byte < 32 and byte != 10 for byte in text.out + document.out):
        return "control characters are printed"
    return ""


def fault_of_other(outcome, inspected, left):
    fault = runs.fault_of_end(outcome, (0, 1, 4))
    if fault:
        return fault
    if inspected.status == 1 and outcome.errors != inspected.errors:
        return f"other errors than inspect's: {outcome.errors[:500]!r}"
    if inspected.status != 1 and outcome.status == 1 and runs.error_lines(outcome) != 1:
        return f"{runs.error_lines(outcome)} errors: {outcome.errors[:500]!r}"
    if (outcome.status == 1) != (not left):
        return f"status {outcome.status}, left {sorted(left)}"
    return ""


def run(campaign, programs, numbers):
    paths = models.write_models(programs.sanitize, runs.KEPT / "commands-sources")

    def attempt(i, rng, folder):
        source = rng.choice(paths)
        (folder / source.name).write_bytes(damage(source.read_bytes(), rng))
        text, document = (runs.call([programs.sanitize, "inspect", source.name, *options], folder,
                                    keep_output=True) for options in ([], ["--json"]))
        fault = fault_of_inspect(text, document)
        if not fault:
            command = [word.format(source.name) for word in OTHERS[i % len(OTHERS)]]
            outcome = runs.call([programs.sanitize, *command], folder)
            if WITHOUT_PAGE not in outcome.errors:
                left = {path.name for path in folder.iterdir()} - {source.name}
                fault = fault_of_other(outcome, text, left)
                fault = fault and f"{' '.join(command)}: {fault}"
        return OTHERS[i % len(OTHERS)][-1], "unsound" if text.status == 1 else "sound", fault

    return campaign.run(numbers, attempt)
