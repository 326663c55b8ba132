"""The zips for Windows: what is in them, and hosts built and run with nothing else."""
import pathlib
import re
import shutil
import struct
import tempfile
import uuid
import zipfile

import packaged

# A host that asks pkg-config for the flags.
PKG_CONFIG_HOST = """cmake_minimum_required(VERSION 3.20)
project(Host LANGUAGES CXX)
find_package(PkgConfig REQUIRED)
pkg_check_modules(ZEBAPI REQUIRED IMPORTED_TARGET zebapi)
add_executable(inbox "${EXAMPLES}/inbox.cpp")
target_compile_features(inbox PRIVATE cxx_std_17)
target_link_libraries(inbox PRIVATE PkgConfig::ZEBAPI)
if(MINGW)
  target_link_options(inbox PRIVATE -static)
endif()
"""

# The versions of the libraries that zeb-import is linked with.
OTHERS = {"pff.dll": "2018.7.14", "gmime-3.dll": "3.2.13"}
MBOX = b"From ada@example.org Fri Jan  2 03:04:05 2026\nFrom: Ada <ada@example.org>\nSubject: From an mbox\n\nHello\n"


def resource_version(file):
    """The version in a DLL's or program's version resource."""
    data = file.read_bytes()
    fixed = data.index(struct.pack("<II", 0xFEEF04BD, 0x10000))
    high, low = struct.unpack_from("<II", data, fixed + 8)
    return f"{high >> 16}.{high & 0xFFFF}.{low >> 16}"


class ZipTest(packaged.PackageTest):
    @classmethod
    def tearDownClass(cls):
        packaged.stop_wine()

    def in_each(self, check):
        for abi in packaged.ABIS:
            with self.subTest(abi):
                try:
                    check(abi, self.unpack(abi))
                finally:
                    self.doCleanups()

    def test_everything_is_in_it(self):
        self.in_each(self.has_everything)

    def has_everything(self, abi, tree):
        endings = {"mingw": (".dll.debug", ".exe.debug", "lib/libzebapi.dll.a", "GCC-runtime"),
                   "msvc": (".pdb", ".pdb", "lib/zebapi.lib", "LLVM-runtime")}[abi]
        expected = ["bin/zebapi.dll", "bin/zebstore.dll", "bin/zeb.exe", "bin/zebview.exe", "bin/zeb-import.exe",
                    "bin/pff.dll", "bin/gmime-3.dll", "bin/zeb-import" + endings[1], "bin/zebapi" + endings[0], "bin/zebstore" + endings[0],
                    "bin/zeb" + endings[1], "bin/zebview" + endings[1], endings[2], f"licences/{endings[3]}.txt",
                    "include/zebapi/ZebAPI.h", "include/zebstore/zebstore.h", "lib/cmake/ZebAPI/ZebAPIConfig.cmake",
                    "lib/pkgconfig/zebapi.pc", "README.md", "CHANGELOG.md", "LICENSE", "NOTICES.md", "docs/zeb.md",
                    "docs/images/rooms.svg", "examples/CMakeLists.txt", "examples/tour.cpp"]
        expected += [f"licences/{name}.txt" for name in ("SQLite", "utf8proc", "xxHash", "CLI11", "nlohmann-json", "date", "libxml2",
                                                         "MinGW-w64", "libpff", "GMime", "GLib", "libiconv", "GPL-3.0")]
        self.assertEqual([name for name in expected if not (tree / name).is_file() or not (tree / name).stat().st_size], [])

    def test_files_are_in_the_order_of_their_names(self):
        for abi in packaged.ABIS:
            with zipfile.ZipFile(packaged.zip_of(abi)) as package:
                names = package.namelist()
            self.assertEqual({name.partition("/")[0] for name in names}, {packaged.zip_of(abi).stem})
            self.assertEqual(names, sorted(names))

    def test_no_file_names_the_folder_of_the_build(self):
        self.in_each(lambda abi, tree: self.says_no_place_of_the_build(tree))

    def test_every_binary_says_its_version(self):
        self.in_each(self.binaries_say_their_version)

    def binaries_say_their_version(self, _abi, tree):
        binaries = sorted([*tree.glob("bin/*.dll"), *tree.glob("bin/*.exe")])
        self.assertGreaterEqual(len(binaries), 7)
        self.assertEqual({file.name: resource_version(file) for file in binaries},
                         {file.name: OTHERS.get(file.name, packaged.VERSION) for file in binaries})

    def test_every_binary_is_hardened(self):
        self.in_each(self.binaries_are_hardened)

    def binaries_are_hardened(self, _abi, tree):
        packaged.run(packaged.ROOT / "scripts/check-hardening.py", *sorted([*tree.glob("bin/*.dll"), *tree.glob("bin/*.exe")]))

    def test_debug_files_belong_to_the_binaries(self):
        self.in_each(self.has_debug_files)

    def has_debug_files(self, abi, tree):
        for name in ("zebapi.dll", "zebstore.dll", "zeb.exe", "zeb-import.exe", "zebview.exe"):
            binary = tree / "bin" / name
            if abi == "mingw":
                self.assertIn(f"{name}.debug".encode(), binary.read_bytes())
                sections = packaged.run("x86_64-w64-mingw32-objdump", "-h", binary)
                self.assertNotIn(".debug_info", sections)
                self.assertIn(".debug_info", packaged.run("x86_64-w64-mingw32-objdump", "-h", f"{binary}.debug"))
            else:
                pdb = binary.with_suffix(".pdb")
                told = packaged.run("llvm-readobj-14", "--coff-debug-directory", binary)
                self.assertIn(f"PDBFileName: {pdb.name}", told)
                guid = re.search(r"GUID: (\{.*\})", packaged.run("llvm-pdbutil-14", "dump", "--summary", pdb))[1]
                self.assertIn(uuid.UUID(guid).bytes_le.hex(), re.sub(r"\W", "", told).lower())

    def test_hosts_read_a_store_made_by_zeb(self):
        self.in_each(self.reads_a_store)

    def reads_a_store(self, abi, tree):
        self.make_store(tree / "bin")
        arguments = (f"-DCMAKE_TOOLCHAIN_FILE={self.toolchain(abi)}", f"-DCMAKE_PREFIX_PATH={tree}",
                     f"-DCMAKE_FIND_ROOT_PATH={tree}")
        found = self.build(tree / "examples", *arguments)
        asked = self.build_with_pkg_config(tree, *arguments)
        shutil.copy(tree / "bin/zebapi.dll", asked)
        for program in (found / "inbox.exe", found / "list.exe", asked / "inbox.exe"):
            self.shows_the_store(packaged.wine(program))
        self.assertIn("Gr\u00fc\u00dfe from the tour", packaged.wine(found / "tour.exe"))

    def test_the_importer_reads_mail(self):
        self.in_each(self.imports_mail)

    def imports_mail(self, _abi, tree):
        self.make_store(tree / "bin")
        mbox = self.folder / "post \u65e5.mbox"
        mbox.write_bytes(MBOX)
        importer = tree / "bin/zeb-import.exe"
        self.assertEqual(packaged.wine(importer, packaged.in_wine(mbox)), "1 message in 1 folder\n")
        found = packaged.wine(tree / "bin/zeb.exe", "find", "post \u65e5", "--json")
        self.assertIn("From an mbox", found)
        sample = packaged.ROOT / "build/deps/node_modules/pst-extractor/example/testdata/enron.pst"
        self.assertRegex(packaged.wine(importer, packaged.in_wine(sample)), r"^71 messages in \d+ folders\n$")

    def build_with_pkg_config(self, tree, *arguments):
        project = pathlib.Path(tempfile.mkdtemp(dir=self.folder))
        (project / "CMakeLists.txt").write_text(PKG_CONFIG_HOST, encoding="utf-8")
        (project / "pkg-config").write_text(f"#!/bin/sh\nPKG_CONFIG_LIBDIR='{tree}/lib/pkgconfig' exec pkg-config \"$@\"\n",
                                            encoding="utf-8")
        (project / "pkg-config").chmod(0o755)
        return self.build(project, *arguments, f"-DEXAMPLES={tree}/examples", f"-DPKG_CONFIG_EXECUTABLE={project}/pkg-config")
