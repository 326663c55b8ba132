#!/usr/bin/env python3
"""Checks what a built library shows to the outside: its exported names and the libraries it needs.

check_exports.py LIBRARY            (of zebapi or zebstore: a .so or a .dll)
check_exports.py --update LIBRARY   writes the list of its exported names

Its exported names are those of the list in exports/, one list for each library and C++ ABI. Of zebapi, every export
belongs to one of the library's classes or is one of its free functions; every class and every free function is there.
What is loaded with the library belongs to the system or to the compiler's runtime, and it says its version.
"""
import pathlib
import re
import struct
import subprocess
import sys
import unittest

CLASSES = """
    CAdviseSink CAdviseSinkBinder CAdviseSinkDelegate
    CZebABContainer CZebABItem CZebAPI CZebAddressBook CZebAttachment CZebBinArray CZebBinary CZebCachedTable
    CZebContainer CZebDistList CZebEntryIDRequest CZebException CZebFolder CZebIProp CZebMailUser CZebMessage CZebMsgStore
    CZebNameIdHelper CZebNameIdMap CZebOnePropVal CZebProfAdmin CZebProfileNames CZebPropObj CZebPropProblemArray
    CZebPropTagArray CZebPropVal CZebPropValArray CZebRestriction CZebRestrictionAllocator CZebRow CZebRowSet
    CZebRowSetArray CZebSession CZebSortOrder CZebTable
""".split()
# Without virtual operations.
PLAIN_CLASSES = ["CZebTableRows"]

# Each with the number of its overloads.
FUNCTIONS = {
    "Zeb_GetMAPI": 1,
    "Zeb_GetVersion": 1,
    "Zeb_GetMapiDllPath": 1,
    "Zeb_HasDefaultProfile": 1,
    "Zeb_HasDefaultStaticProfile": 1,
    "Zeb_GetExceptionDescription": 1,
    "Zeb_GetResultDescription": 1,
    "Zeb_DescribeException": 1,
    "Zeb_Utf8": 1,
    "Zeb_Wide": 1,
    "Zeb_SetLogSink": 1,
    "Zeb_MemInitialize": 2,
    "Zeb_MemUninitialize": 1,
    "Zeb_MemAllocate": 1,
    "Zeb_MemReallocate": 1,
    "Zeb_MemFree": 1,
    "Zeb_MemExFree": 1,
    "Zeb_PropCopyMore": 1,
    "Zeb_FreeProws": 1,
    "Zeb_DumpEntryID": 1,
    "Zeb_IsClassSubclassOf": 1,
    "Zeb_NameFromValue": 1,
    "Zeb_ValueFromName": 1,
    "Zeb_NameAt": 1,
    "Zeb_ValueAt": 1,
    "Zeb_TableCount": 1,
}

# Names of the system or of the compiler's runtime (including its sanitizers, in a build with them).
NEEDED = {
    "elf": r"lib(c|m|dl|pthread|stdc\+\+|gcc_s|asan|ubsan|tsan)\.so\.\d+|ld-linux-x86-64\.so\.2",
    "pe": r"(?i)(kernel32|advapi32|user32|ole32|oleaut32|msvcrt)\.dll",
    "msvc": r"(?i)(kernel32|advapi32|user32|ole32|oleaut32|ucrtbase|vcruntime140|msvcp140)\.dll",
}

LISTS = pathlib.Path(__file__).parent / "exports"

MEMBER = re.compile(r"(?:non-virtual thunk to )?(\w+)::.*")
RECORD = re.compile(r"(?:typeinfo|typeinfo name|vtable|VTT) for (\w+)\*?")
FUNCTION = re.compile(r"(Zeb_\w+)\(.*\)")
# The same in the MSVC ABI.
MSVC_MEMBER = re.compile(r"(?:\[thunk\]: )?(?:public|protected|private): .*?__cdecl (\w+)::.*")
MSVC_DATA = re.compile(r"(?:public|protected|private): static (?:(?!__cdecl).)* (\w+)::\w+")
MSVC_RECORD = re.compile(r"const (\w+)::`vftable'.*")
MSVC_FUNCTION = re.compile(r".* __cdecl (Zeb_\w+)\(.*\)")


def run(*command, text=None):
    return subprocess.run(command, input=text, check=True, capture_output=True, text=True).stdout


def is_windows(library):
    with open(library, "rb") as file:
        return file.read(2) == b"MZ"


def elf_exports(library):
    """(kind, name) of each: W, V and u are copies of inline code, of which a build has more or fewer."""
    for line in run("nm", "-D", "--defined-only", library).splitlines():
        fields = line.split()
        yield fields[-2], fields[-1].split("@")[0]


def pe_exports(library):
    listing = run("llvm-readobj-14", "--coff-exports", library)
    return re.findall(r"^  Name: (\S+)$", listing, re.M)


def exports(library):
    """The exported names, demangled, each once (a destructor or constructor has several bodies of one name)."""
    mangled = pe_exports(library) if is_windows(library) else [name for _, name in elf_exports(library)]
    names = sorted(set(mangled))
    if abi(library) == "msvc":
        # Each name, its meaning, and a blank line.
        listing = run("llvm-undname-14", text="\n".join(names) + "\n")
        return [line for line in listing.splitlines() if line and not line.startswith("?")]
    return run("c++filt", text="\n".join(names)).splitlines()


def abi(library):
    """elf, pe (MinGW's) or msvc, by what the compiler's runtime is."""
    if not is_windows(library):
        return "elf"
    return "msvc" if "vcruntime140.dll" in needed(library) else "pe"


def listed_exports(library):
    """The mangled names that hosts may link to, whatever the compiler and its optimisation. The descriptions of types and the
    tables of functions are copies too, but not with every compiler."""
    if is_windows(library):
        return sorted(pe_exports(library))
    return sorted(name for kind, name in elf_exports(library) if kind not in "WVu" and not re.match("_ZT[ISTV]", name))


def list_of(library):
    """The checked-in list: one for each library and C++ ABI."""
    stem = re.match(r"(?:lib)?([a-z]+)", pathlib.Path(library).name)[1]
    form = abi(library)
    if stem == "zebstore" and is_windows(library):
        form = "windows"  # its exports are C functions, the same in every ABI
    return LISTS / f"{stem}-{form}.txt"


def needed(library):
    if is_windows(library):
        return re.findall(r"DLL Name: (\S+)", run("x86_64-w64-mingw32-objdump", "-p", library))
    return re.findall(r"\(NEEDED\).*\[(.+)\]", run("readelf", "-d", library))


def owner(name):
    """The class or free function that an export belongs to; None for neither."""
    for pattern, known in ((FUNCTION, FUNCTIONS), (RECORD, CLASSES), (MEMBER, CLASSES + PLAIN_CLASSES),
                           (MSVC_FUNCTION, FUNCTIONS), (MSVC_RECORD, CLASSES), (MSVC_MEMBER, CLASSES + PLAIN_CLASSES),
                           (MSVC_DATA, CLASSES)):
        match = pattern.fullmatch(name)
        if match and match.group(1) in known:
            return match.group(1)
    return None


class ExportList(unittest.TestCase):
    library = None

    def test_exported_names_are_those_listed(self):
        found = listed_exports(self.library)
        listed = list_of(self.library).read_text(encoding="ascii").split()
        self.assertGreater(len(listed), 20)
        self.assertEqual(sorted(set(listed) - set(found)), [], "gone: hosts that are built already do not start")
        self.assertEqual(sorted(set(found) - set(listed)), [], "new: check_exports.py --update adds them")

    def test_only_system_and_runtime_are_needed(self):
        allowed = NEEDED[abi(self.library)]
        libraries = needed(self.library)
        self.assertTrue(libraries)
        self.assertEqual([name for name in libraries if not re.fullmatch(allowed, name)], [])

    def test_the_library_says_its_version(self):
        root = LISTS.parents[2]
        if is_windows(self.library):
            project = (root / "CMakeLists.txt").read_text(encoding="utf-8")
            version = re.search(r"^project\(.*VERSION ([\d.]+)", project, re.M)[1]
            data = pathlib.Path(self.library).read_bytes()
            fixed = data.index(struct.pack("<II", 0xFEEF04BD, 0x10000))
            high, low = struct.unpack_from("<II", data, fixed + 8)
            self.assertEqual([high >> 16, high & 0xFFFF, low >> 16], [int(part) for part in version.split(".")])
            return
        rule = (root / "cmake/ZebVersion.cmake").read_text(encoding="utf-8")
        interface = int(re.search(r"^set\(ZEB_INTERFACE_VERSION (\d+)\)", rule, re.M)[1])
        # The provider is loaded by its path, which a registry names.
        ending = f".{interface}" if "zebapi" in pathlib.Path(self.library).name else ""
        name = pathlib.Path(self.library).name.partition(".")[0]
        self.assertIn(f"[{name}.so{ending}]", run("readelf", "-d", self.library))


class Exports(unittest.TestCase):
    library = None

    @classmethod
    def setUpClass(cls):
        cls.names = exports(cls.library)

    def test_every_export_is_public(self):
        self.assertEqual([name for name in self.names if owner(name) is None], [])

    def test_every_class_is_there(self):
        for name in CLASSES:
            if abi(self.library) == "msvc":
                # The descriptions of types belong to each module there.
                self.assertTrue(any(each.startswith(f"const {name}::`vftable'") for each in self.names), name)
                continue
            self.assertIn(f"vtable for {name}", self.names)
            self.assertIn(f"typeinfo for {name}", self.names)

    def test_every_function_is_there(self):
        found = {}
        for name in self.names:
            match = FUNCTION.fullmatch(name) or MSVC_FUNCTION.fullmatch(name)
            if match:
                found[match.group(1)] = found.get(match.group(1), 0) + 1
        self.assertEqual(found, FUNCTIONS)


class Owner(unittest.TestCase):
    """What counts as internal."""

    def test_internals_have_no_owner(self):
        for name in ("zeb::SearchProvider(zeb::ProviderEnvironment const&)", "std::vector<int>::push_back(int)",
                     "CDllLoader::Unload()", "CStringT<char>::IsEmpty() const", "qorlog::Write(int, char const*)",
                     "CZebAPIApp::InitInstance()", "vtable for CZebAPIApp", "typeinfo for CException",
                     "Zeb_Unknown()", "LLog(int, char const*, char const*)", "sqlite3_open", "CZebTableHelper::Do()"):
            self.assertIsNone(owner(name), name)

    def test_msvc_internals_have_no_owner(self):
        for name, expected in (
                ("public: virtual void __cdecl CZebTable::Free(void)", "CZebTable"),
                ("public: virtual class CStringT<char> __cdecl CZebBinary::String(void) const", "CZebBinary"),
                ("[thunk]: public: virtual void __cdecl CZebCachedTable::`adjustor{16}'(void)", "CZebCachedTable"),
                ("private: static class CZebException CZebException::s_outOfMemory", "CZebException"),
                ("const CZebTable::`vftable'", "CZebTable"),
                ("void __cdecl Zeb_MemFree(void *)", "Zeb_MemFree"),
                ("public: void __cdecl CDllLoader::Unload(void)", None),
                ("int __cdecl zeb::SearchProvider(void)", None),
                ("const CException::`vftable'", None)):
            self.assertEqual(owner(name), expected, name)

    def test_members_and_records_have_one(self):
        for name, expected in (("CZebTable::Free()", "CZebTable"), ("vtable for CZebTable", "CZebTable"),
                               ("typeinfo for CZebException*", "CZebException"),
                               ("non-virtual thunk to CZebCachedTable::~CZebCachedTable()", "CZebCachedTable"),
                               ("Zeb_MemFree(void*)", "Zeb_MemFree")):
            self.assertEqual(owner(name), expected)


def main(arguments):
    if len(arguments) == 2 and arguments[0] == "--update":
        names = listed_exports(arguments[1])
        LISTS.mkdir(exist_ok=True)
        list_of(arguments[1]).write_text("\n".join(names) + "\n", encoding="ascii")
        return
    if len(arguments) != 1:
        sys.exit(__doc__)
    ExportList.library = Exports.library = arguments[0]
    cases = [ExportList] if "zebstore" in pathlib.Path(arguments[0]).name else [ExportList, Exports, Owner]
    suite = unittest.TestSuite(unittest.defaultTestLoader.loadTestsFromTestCase(case) for case in cases)
    sys.exit(not unittest.TextTestRunner().run(suite).wasSuccessful())


if __name__ == "__main__":
    main(sys.argv[1:])
