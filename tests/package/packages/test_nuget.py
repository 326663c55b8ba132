"""The NuGet package: its parts, and a host built with the settings that its targets give."""
import re
import shutil
import zipfile
from xml.etree import ElementTree

import packaged

PACKAGE = packaged.PACKAGES / f"zebapi.{packaged.VERSION}.nupkg"
BUILD = "{http://schemas.microsoft.com/developer/msbuild/2003}"
HOST = """cmake_minimum_required(VERSION 3.20)
project(Host LANGUAGES CXX)
add_executable(host "${EXAMPLE}")
target_compile_features(host PRIVATE cxx_std_17)
target_include_directories(host PRIVATE ${INCLUDES})
target_link_directories(host PRIVATE ${FOLDERS})
target_link_libraries(host PRIVATE ${LIBRARIES})
"""


class NugetTest(packaged.PackageTest):
    @classmethod
    def setUpClass(cls):
        super().setUpClass()
        cls.tree = cls.folder / "package"
        with zipfile.ZipFile(PACKAGE) as package:
            cls.names = package.namelist()
            package.extractall(cls.tree)

    @classmethod
    def tearDownClass(cls):
        packaged.stop_wine()

    def test_it_is_a_package(self):
        types = ElementTree.parse(self.tree / "[Content_Types].xml").getroot()
        endings = {each.get("Extension") for each in types if each.tag.endswith("Default")}
        parts = {each.get("PartName")[1:] for each in types if each.tag.endswith("Override")}
        untyped = [name for name in self.names if name != "[Content_Types].xml" and name not in parts
                   and name.rpartition(".")[2] not in endings]
        self.assertEqual(untyped, [])
        relation = ElementTree.parse(self.tree / "_rels/.rels").getroot()[0]
        self.assertEqual(relation.get("Target"), "/zebapi.nuspec")
        metadata = ElementTree.parse(self.tree / "zebapi.nuspec").getroot()[0]
        told = {each.tag.partition("}")[2]: each.text for each in metadata}
        self.assertEqual((told["id"], told["version"]), ("zebapi", packaged.VERSION))
        for name in (told["license"], told["readme"]):
            self.assertIn(name, self.names)

    def test_no_file_names_the_folder_of_the_build(self):
        self.says_no_place_of_the_build(self.tree)

    def setting(self, root, name):
        """What the targets add to one setting of Visual Studio, as paths."""
        text = root.find(f".//{BUILD}{name}").text
        text = text.replace("$(ZebApiMapiHeaders)", root.find(f".//{BUILD}ZebApiMapiHeaders").text)
        text = text.replace("$(MSBuildThisFileDirectory)", f"{self.tree}/build/native/").replace("\\", "/")
        return [part for part in text.split(";") if not part.startswith("%(")]

    def test_its_targets_build_a_host(self):
        root = ElementTree.parse(self.tree / "build/native/zebapi.targets").getroot()
        project = self.folder / "project"
        project.mkdir()
        (project / "CMakeLists.txt").write_text(HOST, encoding="utf-8")
        libraries = [each.removesuffix(".lib") for each in self.setting(root, "AdditionalDependencies")]
        build = self.build(project, f"-DCMAKE_TOOLCHAIN_FILE={self.toolchain('msvc')}",
                           f"-DEXAMPLE={self.tree}/examples/inbox.cpp",
                           "-DINCLUDES=" + ";".join(self.setting(root, "AdditionalIncludeDirectories")),
                           "-DFOLDERS=" + ";".join(self.setting(root, "AdditionalLibraryDirectories")),
                           "-DLIBRARIES=" + ";".join(libraries))
        copied = root.find(f".//{BUILD}ZebApiFiles").get("Include").split(";")[0]
        pattern = re.sub(r".*\)", "build/native/", copied).replace("\\", "/")
        for file in self.tree.glob(pattern):
            shutil.copy(file, build)
        self.assertTrue((build / "zebapi.dll").is_file())
        self.make_store(self.tree / "build/native/bin/x64")
        self.shows_the_store(packaged.wine(build / "host.exe"))
