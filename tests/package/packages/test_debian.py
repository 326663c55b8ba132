"""The Debian packages: their form, and what they do unpacked in a folder with nothing of the sources."""
import os
import pathlib
import re
import shutil
import subprocess

import packaged

NAMES = ("libzebapi0", "libzebapi-dev", "zeb-tools")
ARCH = "x86_64-linux-gnu"
MBOX = """From ada@example.org Fri Jan  2 09:15:00 2026
From: Ada Lovelace <ada@example.org>
To: Boris Cole <boris@example.org>
Subject: Plans for January
Date: Fri, 2 Jan 2026 09:15:00 +0000

First the engine, then the notes.

From boris@example.org Fri Jan  2 10:15:00 2026
From: Boris Cole <boris@example.org>
To: Ada Lovelace <ada@example.org>
Subject: Lunch?
Date: Fri, 2 Jan 2026 10:15:00 +0000

At noon.

"""


# The version of the packages: that of the sources and the number of the packaging.
REVISION = re.match(r"zebapi \((.+?)\)", (packaged.ROOT / "packaging/debian/changelog").read_text(encoding="utf-8"))[1]


def package(name):
    return packaged.PACKAGES / f"{name}_{REVISION}_amd64.deb"


class DebianTest(packaged.PackageTest):
    @classmethod
    def setUpClass(cls):
        super().setUpClass()
        cls.root = cls.folder / "root"
        for name in NAMES:
            packaged.run("dpkg-deb", "-x", package(name), cls.root)
        cls.libraries = cls.root / f"usr/lib/{ARCH}"
        # What Debian does for /usr.
        cls.environment = dict(os.environ, LD_LIBRARY_PATH=str(cls.libraries), ZEBAPI_REGISTRY=str(cls.folder / "registry.reg"),
                               PKG_CONFIG_PATH=str(cls.libraries / "pkgconfig"), HOME=str(cls.folder))

    def field(self, name, field):
        return packaged.run("dpkg-deb", "-f", package(name), field).strip()

    def in_root(self, *command):
        return packaged.run(*command, env=self.environment, cwd=self.folder)

    def test_lintian_finds_no_error(self):
        debs = [package(name) for name in NAMES]
        told = packaged.run("lintian", "--allow-root", "--fail-on", "error", *debs)
        self.assertNotRegex(told, r"(?m)^E: ")

    def test_lintian_is_asked(self):
        # A package that lintian must object to: an error is seen.
        broken = self.folder / "broken"
        shutil.copytree(self.root / "usr/bin", broken / "usr/local/bin")
        (broken / "DEBIAN").mkdir()
        (broken / "DEBIAN/control").write_text("Package: broken\nVersion: 1\nArchitecture: amd64\nMaintainer: nobody\n"
                                               "Description: broken\n", encoding="utf-8")
        packaged.run("dpkg-deb", "--build", "--root-owner-group", broken, self.folder / "broken.deb")
        self.assertRegex(packaged.run("lintian", "--allow-root", "--fail-on", "error", self.folder / "broken.deb", code=2),
                         r"(?m)^E: ")

    def test_programs_and_libraries_are_hardened(self):
        files = [path for path in sorted(self.root.rglob("*")) if path.is_file() and not path.is_symlink()
                 and path.read_bytes()[:4] == b"\x7fELF"]
        self.assertGreaterEqual(len(files), 4)
        packaged.run(packaged.ROOT / "scripts/check-hardening.py", *files)

    def test_packages_depend_on_what_they_need(self):
        self.assertRegex(self.field("libzebapi0", "Depends"), r"libc6 .*libstdc\+\+6")
        self.assertIn(f"libzebapi0 (= {REVISION})", self.field("libzebapi-dev", "Depends"))
        tools = self.field("zeb-tools", "Depends")
        for name in ("libzebapi0 (>= ", "libpff1", "libgmime-3.0-0", "libxml2"):
            self.assertIn(name, tools)
        for name in NAMES:
            self.assertEqual(self.field(name, "Version"), REVISION)

    def test_the_library_has_its_name_and_symbols(self):
        told = packaged.run("readelf", "-d", self.libraries / "libzebapi.so.0")
        self.assertIn("[libzebapi.so.0]", told)
        self.assertNotRegex(told, "RUNPATH|RPATH")
        control = self.folder / "control"
        packaged.run("dpkg-deb", "-e", package("libzebapi0"), control)
        symbols = (control / "symbols").read_text(encoding="ascii")
        listed = (packaged.ROOT / "tests/install/exports/zebapi-elf.txt").read_text(encoding="ascii").split()
        self.assertTrue(symbols.startswith("libzebapi.so.0 libzebapi0 "), symbols[:80])
        self.assertEqual(set(listed) - set(re.findall(r"^ (\S+)@", symbols, re.M)), set())
        self.assertIn("activate-noawait ldconfig", (control / "triggers").read_text(encoding="ascii"))

    def test_no_file_names_the_folder_of_the_build(self):
        self.says_no_place_of_the_build(self.root)

    def test_every_package_says_its_licences(self):
        for name in NAMES:
            text = (self.root / f"usr/share/doc/{name}/copyright").read_text(encoding="utf-8")
            self.assertIn("The ZebAPI authors", text)
            for part in ("SQLite", "utf8proc", "xxHash", "CLI11", "nlohmann-json", "date"):
                self.assertIn(f"Part of the binaries: {part}\n", text)

    def test_examples_read_what_zeb_imported(self):
        zeb, usr = self.root / "usr/bin/zeb", self.root / "usr"
        self.in_root(zeb, "provider", "install")
        self.in_root(zeb, "profile", "create", "demo", "--store", self.folder / "demo.zeb", "--default")
        mbox = self.folder / "two.mbox"
        mbox.write_text(MBOX, encoding="utf-8")
        self.in_root(self.root / "usr/bin/zeb-import", "mbox", mbox, "--inbox", "two")
        self.assertIn("2 messages", self.in_root(zeb, "inbox"))
        found = self.build(usr / "share/doc/libzebapi-dev/examples", f"-DCMAKE_PREFIX_PATH={usr}")
        asked = self.folder / "asked"
        flags = self.in_root("pkg-config", "--cflags", "--libs", "zebapi").split()
        self.in_root("c++", "-std=c++17", usr / "share/doc/libzebapi-dev/examples/inbox.cpp", "-o", asked, *flags)
        for program in (found / "inbox", found / "list", asked):
            self.shows_the_store(self.in_root(program))
        self.in_root(found / "tour")

    def test_programs_load_the_packages_libraries(self):
        loaded = subprocess.run(["ldd", self.root / "usr/bin/zeb"], env=self.environment, capture_output=True, text=True,
                                check=True).stdout
        self.assertIn(f"libzebapi.so.0 => {self.libraries}/libzebapi.so.0", loaded)
        self.assertNotIn("not found", loaded)
        self.assertTrue(pathlib.Path(self.libraries / "zebapi/libzebstore.so").is_file())
