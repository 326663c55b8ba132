#!/usr/bin/env python3
"""Checks that every operation a library exports has a call in the scan of failures.

check_calls.py LIBRARY     (libzebapi.so, or zebapi.dll of either C++ ABI)

The calls are the entries of the *Calls.cpp next to this file: {"CZebRow::Count", ...}. An operation with several forms
needs as many entries.
"""
import collections
import pathlib
import re
import sys
import unittest

HERE = pathlib.Path(__file__).resolve().parent
sys.path.insert(0, str(HERE.parent.parent / "install"))
import check_exports  # noqa: E402

# Private: no host calls them, only the operations that are called here do.
PRIVATE = set("""
    CAdviseSink::Deliver CAdviseSinkBinder::Register
    CZebAPI::BindAllocator CZebAPI::GetProfAdmin CZebAPI::InitializeMAPI CZebAPI::InitializeWAB CZebAPI::Logon
    CZebAPI::MayUnbind CZebAPI::OpenWAB CZebAPI::RefuseLibrary CZebAPI::ResolveEntryPoints CZebAPI::UninitializeMAPI
    CZebAPI::UninitializeWAB CZebAPI::Unload
    CZebCachedTable::ReadRow CZebCachedTable::ReadWindow
    CZebException::SetOperation CZebException::ThrowOutOfMemory
    CZebIProp::MayHaveParent CZebIProp::TagOfName CZebIProp::_HrGetOneProp_
    CZebNameIdHelper::Fill CZebNameIdMap::Find
    CZebOnePropVal::CheckEither CZebOnePropVal::Elements CZebOnePropVal::HoldsError CZebOnePropVal::IsOfType
    CZebOnePropVal::SetElements CZebPropTagArray::Grow CZebTableRows::ReadBatch
""".split())
PRIVATE_FORM = re.compile(r"CZebException::CZebException\((struct )?CZebException::Reserve\)")
# What is no operation: the records and objects of classes, and what the compiler makes.
NO_OPERATION = re.compile(
    r"(typeinfo|vtable|VTT|non-virtual thunk|virtual thunk|guard variable|construction vtable)\b.*"
    r"|CZebException::(classCZebException|s_\w+)"
    r"|\[thunk\]:.*|.*`(vftable|vector deleting dtor'|scalar deleting dtor|vbase dtor|default ctor closure).*"
    r"|(public|protected|private): static (?:(?!__cdecl).)* \w+::\w+")
MSVC_PREFIX = re.compile(r"(public: |protected: |private: )?(static |virtual )*.*?__cdecl ")


def operation(export):
    """`CZebRow::Count() const` is "CZebRow::Count"; a conversion is "CZebBinary::operator type"."""
    name = MSVC_PREFIX.sub("", export, count=1)
    match = re.match(r"(\w+)::operator ?([^\w\s][^\w\s(]*|\(\))?(.*)", name)
    if match:
        symbol = match.group(2)
        return f"{match.group(1)}::operator{symbol}" if symbol else f"{match.group(1)}::operator type"
    return re.match(r"(?:\w+::)*~?\w+", name).group(0)


def exported_operations(library):
    """How many forms each exported operation has. Destructors are run by every call."""
    forms = collections.Counter()
    for export in sorted(set(check_exports.exports(library))):
        if NO_OPERATION.fullmatch(export) or PRIVATE_FORM.search(export):
            continue
        name = operation(export)
        if "~" not in name and name not in PRIVATE:
            forms[name] += 1
    return forms


def calls():
    text = "".join(path.read_text(encoding="utf-8") for path in sorted(HERE.glob("*Calls.cpp")))
    return collections.Counter(re.findall(r'^        \{"([^"]+)",', text, re.M))


class Calls(unittest.TestCase):
    library = None

    def test_every_exported_operation_is_called(self):
        exported, called = exported_operations(self.library), calls()
        self.assertGreater(len(exported), 300)
        missing = {name: f"{called[name]} of {count}" for name, count in exported.items() if called[name] < count}
        self.assertEqual(missing, {})

    def test_private_operations_are_exported_still(self):
        names = {operation(export) for export in check_exports.exports(self.library)
                 if not NO_OPERATION.fullmatch(export)}
        self.assertEqual(PRIVATE - names, set())


class Operation(unittest.TestCase):
    def test_names(self):
        for export, name in (
                ("CZebRow::Count() const", "CZebRow::Count"),
                ("CZebRow::CZebRow(CZebRow const&)", "CZebRow::CZebRow"),
                ("CZebBinary::operator unsigned int() const", "CZebBinary::operator type"),
                ("CZebBinary::operator zeb::CStringT<char>()", "CZebBinary::operator type"),
                ("CZebBinary::operator==(CZebBinary const&) const", "CZebBinary::operator=="),
                ("CZebRowSet::operator&()", "CZebRowSet::operator&"),
                ("CZebRowSet::operator[](unsigned int) const", "CZebRowSet::operator[]"),
                ("Zeb_MemFree(void*)", "Zeb_MemFree"),
                ("public: virtual unsigned long __cdecl CZebRow::Count(void) const", "CZebRow::Count"),
                ("public: virtual __cdecl CZebBinary::operator unsigned long(void) const", "CZebBinary::operator type"),
                ("void __cdecl Zeb_MemFree(void *)", "Zeb_MemFree")):
            self.assertEqual(operation(export), name)


if __name__ == "__main__":
    Calls.library = sys.argv.pop(1)
    unittest.main()
