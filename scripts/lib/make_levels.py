"""Writes COUNT scenes of 1,000 triangles, level000.obj and so on: make_levels.py FOLDER COUNT"""
import sys

folder, count = sys.argv[1], int(sys.argv[2])
WIDE, HIGH = 25, 20
for k in range(count):
    with open(f"{folder}/level{k:03}.obj", "w", encoding="utf-8") as out:
        for y in range(HIGH + 1):
            for x in range(WIDE + 1):
                out.write(f"v {40 * x} {40 * y} {(7 * x + 13 * y + k) % 5 * 3 + k}\n")
        for a in (y * (WIDE + 1) + x + 1 for y in range(HIGH) for x in range(WIDE)):
            out.write(f"f {a} {a + 1} {a + WIDE + 2}\nf {a} {a + WIDE + 2} {a + WIDE + 1}\n")
