"""How the add-on finds and runs the program, and what it says when that goes wrong."""

import os
import subprocess
import time
from unittest import mock

import bpy
import mapexport
from exporting import PROGRAM, ExportCase, add, mesh
from mapexport.run import Run


class Program(ExportCase):
    def setUp(self):
        super().setUp()
        add("Corner", mesh())
        path = os.environ["PATH"]
        self.addCleanup(os.environ.__setitem__, "PATH", path)

    def replace(self, *lines, version="mapexport 9.0.0"):
        """Puts another program in the place of mapexport."""
        other = self.folder / "bin/mapexport"
        other.parent.mkdir(exist_ok=True)
        answer = f'[ "$1" != --version ] || {{ echo "{version}"; exit 0; }}'
        other.write_text("\n".join(("#!/bin/sh", answer, *lines, "")))
        other.chmod(0o755)
        os.environ["PATH"] = f"{other.parent}:{os.environ['PATH']}"
        return str(other)

    def test_registering_twice(self):
        mapexport.register()
        mapexport.unregister()
        mapexport.register()
        self.export()

    def test_a_program_that_is_missing_or_old(self):
        other = self.replace(version="mapexport 0.9.3")
        self.assertEqual(
            self.refusal(),
            f'the program "{other}" is too old: this add-on needs mapexport 1.1.0 or later',
        )
        self.replace("echo 'error: unexpected: json --messages' >&2; exit 2")
        self.assertIn("is too old: this add-on needs", self.refusal())
        self.replace(version="GNU something 1.0")
        self.assertIn("is not mapexport: it says GNU something 1.0", self.refusal())
        os.environ["PATH"] = str(self.folder)
        self.assertEqual(
            self.refusal(),
            "the program mapexport is not found: install it, "
            "or name it in the add-on's preferences",
        )

    def test_a_program_that_fails(self):
        odd = '{"severity": 1, "code": "", "text": ""}'
        for line, said in (
            (
                'echo \'{"severity": "error", "code": "failed", "text": "no luck"}\' >&2; exit 1',
                "no luck",
            ),
            ("exit 1", "mapexport ended with status 1"),
            ("echo 'not JSON' >&2; exit 1", "not JSON"),
            (f"echo '{odd}' >&2; exit 1", odd),
            ("exit 3", "the export was cancelled"),
            ("kill -9 $$", "mapexport was ended by signal 9"),
        ):
            self.replace(line)
            self.assertEqual(self.refusal(), said)
            self.assertEqual(self.messages()[-1], ("error", said, []))

    def test_what_the_program_refuses(self):
        self.assertIn("needs the scene to be kept", self.refusal(depfile="/level.d"))
        self.assertIn("/nowhere: can't be read", self.refusal(keywords="/nowhere"))
        with mock.patch("tempfile.TemporaryDirectory", side_effect=OSError(28, "full")):
            self.assertIn("can't be written: full", self.refusal())
        said = self.refusal(strict=True, weld_distance=1e6)
        self.assertIn("no-triangle", said)
        self.assertEqual([one[0] for one in self.messages()][-2:], ["warning", "error"])
        with self.assertRaisesRegex(RuntimeError, "can't be written|No such file"):
            bpy.ops.export_scene.mapexport(filepath=str(self.folder / "no/such/level.kob"))

    def test_warnings_name_their_objects(self):
        for name in ("static_Halle", "Tür"):
            add(name, mesh(name), (3, 0, 0))["climbable"] = name == "Tür"
        bpy.data.objects["Tür"].parent = bpy.data.objects["static_Halle"]
        self.export()
        warnings = [nodes for severity, _, nodes in self.messages() if severity == "warning"]
        self.assertEqual(warnings, [["Tür"]])
        self.assertEqual(bpy.ops.mapexport.select_nodes(names="Tür\nfehlt"), {"FINISHED"})
        chosen = [item.name for item in bpy.context.view_layer.objects if item.select_get()]
        self.assertEqual(chosen, ["Tür"])
        self.assertEqual(bpy.ops.mapexport.select_nodes(names="fehlt"), {"CANCELLED"})
        self.assertEqual(bpy.ops.mapexport.clear_messages(), {"FINISHED"})
        self.assertEqual(self.messages(), [])

    def test_lists_that_are_too_long_name_what_fills_them(self):
        bpy.ops.mesh.primitive_grid_add(x_subdivisions=260, y_subdivisions=260, size=260)
        bpy.context.object.name = "Hügel"
        self.export()
        self.assertEqual([one for one in self.messages() if one[0] == "warning"], [])
        self.export(split=False)
        warnings = [nodes for severity, _, nodes in self.messages() if severity == "warning"]
        self.assertTrue(warnings and all(nodes[0] == "Hügel" for nodes in warnings), warnings)

    def test_cancelling_ends_the_program(self):
        started = self.folder / "started"
        other = self.replace(f'trap "" TERM; : >{started}; sleep 60 & wait; sleep 60')
        run = Run(other, [], str(self.folder))
        while not started.exists():
            time.sleep(0.01)
        self.assertFalse(run.has_ended())
        with mock.patch("mapexport.run._SECONDS_TO_END", 0.1):
            run.stop()
        self.assertTrue(run.has_ended())
        self.assertEqual(run.failure([]), "mapexport was ended by signal 9")

    def test_options_reach_the_program(self):
        said = self.folder / "arguments"
        self.replace(f'printf "%s\\n" "$@" >{said}; exit 1')
        with self.assertRaises(RuntimeError):
            bpy.ops.export_scene.mapexport(
                filepath=str(self.folder / "level"),
                layout="qob",
                weld=False,
                weld_distance=0.1,
                voxel_size=-1e-7,
                split=False,
                longest_list=300,
                coordinates="max",
                textures="/a;/b c",
                allow="cut-name; left-out",
                seed=7,
                report_file="/r.json",
            )
        words = said.read_text().splitlines()
        text = " ".join(words)
        for part in (
            "--no-weld --weld-distance 0.1 --clean --voxel-size -0.0000001 --longest-list 300",
            "--coordinates max --texture-coordinates invert-y --textures /a --textures /b c",
            "--allow cut-name --allow left-out --seed 7 --report /r.json",
            "export --fresh --messages json",
            "--no-log",
        ):
            self.assertIn(part, text)
        self.assertNotIn("--split", words)
        self.assertEqual(words[-1], str(self.folder / "level.qob"))
        # The program has all these options.
        known = subprocess.run([PROGRAM, "export", "--help"], capture_output=True, text=True)
        for word in words:
            if word.startswith("--"):
                self.assertIn(word, known.stdout)

    def test_the_same_scene_and_seed_give_the_same_bytes(self):
        self.export(seed=5)
        first = self.output.read_bytes()
        bpy.ops.export_scene.mapexport(filepath=str(self.output))
        self.export(seed=5)
        self.assertEqual(self.output.read_bytes(), first)

    def test_output_names(self):
        for name, layout, made in (
            ("a", "kob", "a.kob"),
            ("b.QOB", "kob", "b.QOB"),
            ("c.map", "qob", "c.map"),
        ):
            bpy.ops.export_scene.mapexport(filepath=str(self.folder / name), layout=layout)
            self.assertTrue((self.folder / made).is_file(), made)
        with self.assertRaisesRegex(RuntimeError, "the level's file has no name"):
            bpy.ops.export_scene.mapexport(filepath=str(self.folder) + "/")
