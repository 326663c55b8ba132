"""The vcpkg port: its portfile is run with the cross compiler of the MSVC ABI, and the examples are built from the result."""
import json
import shutil

import packaged

PORT = packaged.ROOT / "packaging/vcpkg/ports/zebapi"


class VcpkgTest(packaged.PackageTest):
    @classmethod
    def tearDownClass(cls):
        packaged.stop_wine()

    def test_the_port_has_the_version_of_the_sources(self):
        manifest = json.loads((PORT / "vcpkg.json").read_text(encoding="utf-8"))
        self.assertEqual((manifest["name"], manifest["version"]), ("zebapi", packaged.VERSION))

    def test_examples_build_from_the_port(self):
        build = packaged.ROOT / "build/package-vcpkg"
        packaged.run("cmake", f"-DPORT={PORT}", f"-DWORK={self.folder}", f"-DBUILDTREE={build}",
                     f"-DTOOLCHAIN={self.toolchain('msvc')}", "-P", packaged.ROOT / "tests/package/vcpkg/run-port.cmake")
        tree = self.folder / "packages"
        self.assertTrue((tree / "bin/zebapi.pdb").is_file())
        self.assertFalse((tree / "bin/zeb.exe").exists())
        self.says_no_place_of_the_build(tree)
        examples = self.folder / "examples"
        shutil.copytree(packaged.ROOT / "examples", examples)
        shutil.copy(packaged.ROOT / "packaging/examples/CMakeLists.txt", examples)
        built = self.build(examples, f"-DCMAKE_TOOLCHAIN_FILE={self.toolchain('msvc')}", f"-DCMAKE_PREFIX_PATH={tree}",
                           f"-DCMAKE_FIND_ROOT_PATH={tree}")
        self.make_store(self.unpack("msvc") / "bin")
        self.shows_the_store(packaged.wine(built / "inbox.exe"))
