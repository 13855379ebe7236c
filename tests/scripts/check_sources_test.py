#!/usr/bin/env python3
"""Tests scripts/check-sources on small trees of its own."""

import importlib.machinery
import importlib.util
import pathlib
import tempfile
import unittest

ROOT = pathlib.Path(__file__).resolve().parents[2]


def load_script():
    loader = importlib.machinery.SourceFileLoader("check_sources", str(ROOT / "scripts/check-sources"))
    module = importlib.util.module_from_spec(importlib.util.spec_from_loader(loader.name, loader))
    loader.exec_module(module)
    return module


SCRIPT = load_script()


def findings(files):
    """What the script says of a tree with these files: {path: text}."""
    with tempfile.TemporaryDirectory() as folder:
        root = pathlib.Path(folder)
        for path, text in files.items():
            (root / path).parent.mkdir(parents=True, exist_ok=True)
            (root / path).write_text(text + "\n", encoding="utf-8")
        return list(SCRIPT.findings(root))


class Closings(unittest.TestCase):
    CALLS = ("CloseHandle(file)", "DeleteDC(dc)", "DeleteObject(brush)", "EndPaint(window, &paint)",
             "ReleaseDC(window, dc)", "RestoreDC(dc, saved)", "SelectObject(dc, former)", "SysFreeString(text)",
             "VariantClear(&value)", "ImageList_Destroy(list)", "UnhookWindowsHookEx(hook)", "FreeLibrary(module)")

    def test_a_handle_closed_by_hand_is_refused(self):
        for call in self.CALLS:
            found = findings({"src/ui/A.cpp": f"  ::{call};"})
            self.assertEqual(len(found), 1, call)
            self.assertIn("closed by hand", found[0])

    def test_an_owner_may_close(self):
        for line in ("::DeleteDC(dc);  // owner", "static void Close(HDC dc) noexcept { ::DeleteDC(dc); }",
                     "const ScopeExit end([dc] { ::DeleteDC(dc); });"):
            self.assertEqual(findings({"src/ui/A.cpp": line}), [])
        self.assertEqual(findings({"src/support/DeviceContext_win.h": "::ReleaseDC(window, dc);"}), [])

    def test_a_call_with_such_a_name_as_its_part_is_no_closing(self):
        for line in ("::FreeLibraryAndExitThread(module, 0);", "// Calls DeleteObject(brush) later.",
                     "const ObjectSelection selection(dc, brush);"):
            self.assertEqual(findings({"src/ui/A.cpp": line}), [])


class Includes(unittest.TestCase):
    def assert_refused(self, path, include, reason, **others):
        found = findings({path: f"// A file.\n#include {include}", **others.get("files", {})})
        self.assertEqual(len(found), 1, f"{path} including {include}: {found}")
        self.assertTrue(found[0].startswith(f"{path}:2: "), found[0])
        self.assertIn(reason, found[0])

    def assert_allowed(self, path, include, files=None):
        self.assertEqual(findings({path: f"#include {include}", **(files or {})}), [])

    def test_a_layer_may_include_what_its_row_names(self):
        self.assert_allowed("src/wizard/A_win.cpp", '"clients/ClientTable.h"')
        self.assert_allowed("src/clients/A.cpp", '"ese/Database.h"')
        self.assert_allowed("src/controls/A_win.cpp", '"ui/CWnd.h"')
        self.assert_allowed("src/progress/A_win.cpp", '"wizard/Colors_win.h"')

    def test_every_layer_may_include_itself_the_public_headers_and_the_system(self):
        for folder in SCRIPT.LAYERS:
            own = folder.split("/")[1]
            for include in (f'"{own}/B.h"', '"postmarker/WizardRequest.h"', "<vector>", "<gtest/gtest.h>"):
                self.assert_allowed(f"{folder}/A.cpp", include)

    def test_no_layer_includes_one_above_it(self):
        for low, high in (("support", "settings"), ("support", "analysis"), ("analysis", "clients"), ("ipc", "clients"),
                          ("settings", "controls"), ("ui", "controls"), ("ui", "wizard"), ("controls", "wizard"),
                          ("clients", "wizard"), ("ese", "clients"), ("wizard", "progress"), ("ipc", "progress")):
            self.assert_refused(f"src/{low}/A.cpp", f'"{high}/B.h"', f"src/{low} to include {high}")

    def test_layers_side_by_side_dont_include_each_other(self):
        for one, other in (("ese", "analysis"), ("ese", "settings"), ("clients", "ui"), ("clients", "controls"),
                           ("controls", "clients"), ("wizard", "analysis"), ("wizard", "ipc"), ("progress", "clients")):
            self.assert_refused(f"src/{one}/A.cpp", f'"{other}/B.h"', f"src/{one} to include {other}")

    def test_angle_brackets_and_blanks_hide_nothing(self):
        self.assert_refused("src/support/A.h", "<wizard/B.h>", "src/support to include wizard")
        self.assertEqual(len(findings({"src/support/A.h": '  #  include   "wizard/B.h"  // why'})), 1)

    def test_an_adapter_doesnt_include_another_adapter(self):
        self.assert_allowed("src/clients/outlook/A.cpp", '"clients/outlook/B.h"')
        self.assert_allowed("src/clients/outlook/A.cpp", '"clients/ClientTable.h"')
        self.assert_refused("src/clients/outlook/A.cpp", '"clients/thunderbird/B.h"', "this adapter")
        self.assert_refused("src/clients/outlook/A_test.cpp", '"clients/thunderbird/B.h"', "this adapter")

    def test_above_the_adapters_only_their_table_names_them(self):
        self.assert_allowed("src/clients/ClientTable.cpp", '"clients/outlook/A.h"')
        self.assert_allowed("src/clients/ClientTable_test.cpp", '"clients/outlook/A.h"')
        self.assert_refused("src/clients/HookModule_win.cpp", '"clients/outlook/A.h"', "this adapter")

    def test_numbers_of_resources_belong_to_what_has_windows(self):
        resources = {"resources/resource.h": "#define IDC_A 1"}
        self.assert_allowed("src/wizard/A_win.cpp", '"resource.h"', resources)
        self.assert_refused("src/clients/A.cpp", '"resource.h"', "src/clients to include resources", files=resources)

    def test_only_tests_include_what_lies_in_tests(self):
        helpers = {"tests/support/TempFolder.h": "#pragma once"}
        self.assert_allowed("src/clients/A_test.cpp", '"support/TempFolder.h"', helpers)
        self.assert_refused("src/clients/A.cpp", '"support/TempFolder.h"', "lies in tests/", files=helpers)

    def test_a_header_of_src_that_tests_have_as_well_is_one_of_src(self):
        both = {"src/support/Text.h": "#pragma once", "tests/support/Text.h": "#pragma once"}
        self.assert_allowed("src/clients/A.cpp", '"support/Text.h"', both)

    def test_programs_have_rows_too(self):
        self.assert_allowed("apps/inspect/A.cpp", '"clients/incredimail/A.h"')
        self.assert_refused("apps/host/A.cpp", '"clients/ClientTable.h"', "apps/host to include clients")

    def test_a_new_folder_needs_a_row(self):
        self.assert_refused("src/newfolder/A.cpp", "<vector>", "src/newfolder has no row")


class Table(unittest.TestCase):
    def test_every_folder_of_the_tree_has_a_row_and_every_name_in_a_row_is_a_layer(self):
        for parent in ("src", "apps"):
            for folder in (ROOT / parent).iterdir():
                if folder.is_dir():
                    self.assertIn(f"{parent}/{folder.name}", SCRIPT.LAYERS)
        for row in SCRIPT.LAYERS.values():
            self.assertLessEqual({name for name in row if f"src/{name}" not in SCRIPT.LAYERS}, {"resources"})

    def test_no_two_layers_include_each_other(self):
        for folder, row in SCRIPT.LAYERS.items():
            for name in row - {"resources"}:
                self.assertNotIn(folder.split("/")[1], SCRIPT.LAYERS[f"src/{name}"])


if __name__ == "__main__":
    unittest.main()
