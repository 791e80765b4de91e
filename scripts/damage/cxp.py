"""Damaged material databases, through the whole program."""
import mutate
import runs

SOURCES = (runs.ROOT / "examples/yard.cxp", runs.ROOT / "tests/golden/transparent.cxp")
SCENE = runs.ROOT / "tests/golden/transparent.scene.json"


def run(campaign, programs, numbers):
    program = programs.chosen

    def attempt(_, rng, folder):
        source = rng.choice(SOURCES)
        (folder / "damaged.cxp").write_bytes(mutate.damage(source.read_bytes(), rng))
        fault, how, outcome = runs.fault_of_export(program, folder, SCENE,
                                                   ["--fresh", "--cxp", "damaged.cxp"])
        # Whatever it holds, it only tells which textures are transparent.
        if not fault and outcome.status != 0:
            fault = f"status {outcome.status}: {outcome.errors[:500]!r}"
        return source.name, how, fault

    return campaign.run(numbers, attempt)
