"""Runs the add-on's tests in Blender; scripts/test-blender.sh calls it. MAPEXPORT is the program.

    MAPEXPORT=... blender -b --factory-startup --python tests/blender-addon/run.py [-- NAME...]
"""

import pathlib
import sys
import unittest

HERE = pathlib.Path(__file__).resolve().parent
sys.dont_write_bytecode = True
sys.path[:0] = map(str, (HERE, HERE.parent / "blender", HERE.parent.parent / "blender"))

names = sys.argv[sys.argv.index("--") + 1 :] if "--" in sys.argv else []
loader = unittest.defaultTestLoader
tests = loader.loadTestsFromNames(names) if names else loader.discover(str(HERE))
result = unittest.TextTestRunner(verbosity=2).run(tests)
sys.exit(0 if result.wasSuccessful() and result.testsRun else 1)
