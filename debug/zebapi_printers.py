"""GDB prints the library's values as what they hold: texts, property names, restrictions.

GDB loads this by itself next to an installed library, if that folder is declared safe (set auto-load safe-path); by hand:

    (gdb) source zebapi_printers.py

Reads memory only and calls nothing, so it works on core dumps too.
"""
import json
import os
import sys

import gdb
import gdb.printing

sys.path.insert(0, os.path.dirname(os.path.abspath(__file__)))
from zebapi_names import CODES, TAGS, TYPES  # noqa: E402

MOST = 200  # elements and bytes that are read of one value
MV_FLAG = 0x1000
RELATIONS = ["<", "<=", ">", ">=", "==", "!=", "LIKE"]
ORDERS = {0: "ascending", 1: "descending", 2: "combined"}


def is_null(pointer):
    return int(pointer) == 0


def code_name(code):
    code = int(code) & 0xFFFFFFFF
    return CODES.get(code, f"0x{code:08X}")


def tag_name(tag):
    """The property's name and its type: "PR_SUBJECT PT_UNICODE"."""
    tag = int(tag)
    kind = TYPES.get(tag & 0xFFFF, f"0x{tag & 0xFFFF:04X}")
    # The table has one tag for each identifier, mostly.
    return f"{TAGS.get(tag) or TAGS.get(tag >> 16) or f'0x{tag:08X}'} {kind}"


def text_of(pointer, length=-1):
    """A text in quotes; null for a null pointer."""
    if is_null(pointer):
        return "null"
    return json.dumps(pointer.string(errors="replace", length=length), ensure_ascii=False)


def binary_of(binary):
    """An SBinary: its size and its first bytes."""
    size = int(binary["cb"])
    if size == 0 or is_null(binary["lpb"]):
        return f"({size} bytes)"
    shown = min(size, 32)
    digits = bytes(int(binary["lpb"][i]) for i in range(shown)).hex().upper()
    return f"({size} bytes) {digits}{'...' if size > shown else ''}"


def guid_of(guid):
    last = bytes(int(guid["Data4"][i]) for i in range(8)).hex().upper()
    return (f"{{{int(guid['Data1']) & 0xFFFFFFFF:08X}-{int(guid['Data2']) & 0xFFFF:04X}-"
            f"{int(guid['Data3']) & 0xFFFF:04X}-{last[:4]}-{last[4:]}}}")


def file_time_of(time):
    return f"FILETIME 0x{(int(time['dwHighDateTime']) << 32) + int(time['dwLowDateTime']):016X}"


SINGLE = {
    0x0002: lambda value: int(value["i"]), 0x0003: lambda value: int(value["l"]), 0x0004: lambda value: float(value["flt"]),
    0x0005: lambda value: float(value["dbl"]), 0x0006: lambda value: f"{int(value['cur']['int64']) / 10000:.4f}",
    0x0007: lambda value: float(value["at"]), 0x000A: lambda value: code_name(value["err"]),
    0x000B: lambda value: "true" if int(value["b"]) else "false", 0x0014: lambda value: int(value["li"]["QuadPart"]),
    0x001E: lambda value: text_of(value["lpszA"]), 0x001F: lambda value: text_of(value["lpszW"]),
    0x0040: lambda value: file_time_of(value["ft"]), 0x0102: lambda value: binary_of(value["bin"]),
    0x0048: lambda value: "null" if is_null(value["lpguid"]) else guid_of(value["lpguid"].dereference()),
}
# The member of a union of arrays, and of its elements.
MULTIPLE = {0x1002: ("MVi", "lpi", int), 0x1003: ("MVl", "lpl", int), 0x1005: ("MVdbl", "lpdbl", float),
            0x101E: ("MVszA", "lppszA", text_of), 0x101F: ("MVszW", "lppszW", text_of),
            0x1102: ("MVbin", "lpbin", binary_of), 0x1014: ("MVli", "lpli", lambda each: int(each["QuadPart"])),
            0x1040: ("MVft", "lpft", file_time_of), 0x1048: ("MVguid", "lpguid", guid_of)}


def property_of(value):
    """An SPropValue: name, type and value."""
    kind = int(value["ulPropTag"]) & 0xFFFF
    name = tag_name(value["ulPropTag"])
    if kind in SINGLE:
        return f"{name} {SINGLE[kind](value['Value'])}"
    if kind in MULTIPLE:
        array, elements, form = MULTIPLE[kind]
        count = int(value["Value"][array]["cValues"])
        shown = [str(form(value["Value"][array][elements][i])) for i in range(min(count, MOST))]
        return f"{name} [{', '.join(shown)}]"
    return name


def joined(word, node, count, children):
    parts = [restriction_of(children[i]) for i in range(min(int(count), MOST))]
    return f"({f' {word} '.join(parts)})" if parts else f"(no {word})"


def content_of(node):
    return f"{tag_name(node['ulPropTag'])} contains {property_of(node['lpProp'].dereference()).split(' ', 2)[-1]}"


def comparison_of(node):
    return f"{tag_name(node['ulPropTag'])} {RELATIONS[int(node['relop'])]} " + property_of(
        node["lpProp"].dereference()).split(" ", 2)[-1]


def restriction_of(node):
    """An SRestriction as a condition."""
    kind, res = int(node["rt"]), node["res"]
    readers = {
        0: lambda: joined("and", node, res["resAnd"]["cRes"], res["resAnd"]["lpRes"]),
        1: lambda: joined("or", node, res["resOr"]["cRes"], res["resOr"]["lpRes"]),
        2: lambda: f"not {restriction_of(res['resNot']['lpRes'].dereference())}",
        3: lambda: content_of(res["resContent"]),
        4: lambda: comparison_of(res["resProperty"]),
        5: lambda: f"{tag_name(res['resCompareProps']['ulPropTag1'])} {RELATIONS[int(res['resCompareProps']['relop'])]} "
                   f"{tag_name(res['resCompareProps']['ulPropTag2'])}",
        6: lambda: f"{tag_name(res['resBitMask']['ulPropTag'])} & 0x{int(res['resBitMask']['ulMask']):X} "
                   f"{'!=' if int(res['resBitMask']['relBMR']) else '=='} 0",
        8: lambda: f"exists {tag_name(res['resExist']['ulPropTag'])}",
        9: lambda: f"one of {tag_name(res['resSub']['ulSubObject'])}: {restriction_of(res['resSub']['lpRes'].dereference())}",
    }
    return readers[kind]() if kind in readers else f"restriction of kind {kind}"


def sort_order_of(order):
    count = int(order["cSorts"])
    keys = [order["aSort"][i] for i in range(min(count, MOST))]
    return ", ".join(f"{tag_name(key['ulPropTag'])} {ORDERS.get(int(key['ulOrder']), '?')}" for key in keys) or "no keys"


def tags_of(tags):
    count = int(tags["cValues"])
    return ", ".join(tag_name(tags["aulPropTag"][i]) for i in range(min(count, MOST))) or "no tags"


class Text:
    """A printer that gives a text only."""

    def __init__(self, value, form):
        self.value, self.form = value, form

    def to_string(self):
        try:
            return self.form(self.value)
        except gdb.MemoryError as error:
            return f"<{error}>"


class List:
    """A printer that gives a text and elements: `parts` returns the text, and a list of (name, value)."""

    def __init__(self, value, parts):
        self.value, self.parts = value, parts

    def to_string(self):
        return self.parts(self.value)[0]

    def children(self):
        return self.parts(self.value)[1]


def counted(count, one, many):
    return f"{count} {one if count == 1 else many}"


def elements(pointer, count):
    return [(f"[{i}]", pointer[i]) for i in range(min(count, MOST))]


def held(member, form):
    """A form for a class that holds a pointer to what `form` prints."""
    return lambda value: "none" if is_null(value[member]) else form(value[member].dereference())


def cstring(value):
    return text_of(value["m_text"]["m_text"], int(value["m_text"]["m_length"]))


def array(value):
    count = int(value["m_count"])
    return counted(count, "element", "elements"), elements(value["m_items"], count)


def hash_map(value):
    pairs = []
    for bucket in range(int(value["m_bucketCount"])):
        entry = value["m_buckets"][bucket]
        while not is_null(entry) and len(pairs) < MOST:
            pairs.append((f"[{entry['key']}]", entry["value"]))
            entry = entry["next"]
    return counted(int(value["m_count"]), "pair", "pairs"), pairs


def properties(value):
    count = 0 if is_null(value["m_values"]) else int(value["m_count"])
    return counted(count, "property", "properties"), elements(value["m_values"], count)


def row(value):
    count = int(value["cValues"])
    return counted(count, "column", "columns"), elements(value["lpProps"], count)


def row_set(value):
    count = int(value["cRows"])
    return counted(count, "row", "rows"), elements(value["aRow"], count)


def binaries(value):
    count = int(value["cValues"])
    return counted(count, "binary", "binaries"), elements(value["lpbin"], count)


def held_list(member, parts):
    return lambda value: ("none", []) if is_null(value[member]) else parts(value[member].dereference())


def problems(value):
    shown = [value["aProblem"][i] for i in range(min(int(value["cProblem"]), MOST))]
    return ", ".join(f"{int(each['ulIndex'])} {tag_name(each['ulPropTag'])}: {code_name(each['scode'])}" for each in shown) or "none"


def exception(value):
    context = cstring(value["m_context"])[1:-1]
    return f"{code_name(value['m_result'])} {cstring(value['m_description'])}{' in ' + context if context else ''}"


TEXTS = {
    "zeb::CStringT<.*>": cstring,
    "CZebBinary|CZebEntryIDRequest": held("m_binary", binary_of),
    "CZebOnePropVal|CZebPropVal": held("m_value", property_of),
    "CZebPropTagArray": held("m_tags", tags_of),
    "CZebPropProblemArray": held("m_problems", problems),
    "CZebSortOrder": held("m_sortSet", sort_order_of),
    "CZebRestriction|CZebRestrictionAllocator": held("m_node", restriction_of),
    "CZebException": exception,
    "_SBinary": binary_of,
    "_SPropValue": property_of,
    "_SPropTagArray": tags_of,
    "_SRestriction": restriction_of,
    "_SSortOrderSet": sort_order_of,
    "_SPropProblemArray": problems,
}
LISTS = {
    "zeb::CArray<.*>": array,
    "zeb::CPtrArray": lambda value: array(value["m_items"]),
    "zeb::CMap<.*>": hash_map,
    "CZebBinArray": held_list("m_array", binaries),
    "CZebPropValArray": properties,
    "CZebRow": held_list("m_row", row),
    "CZebRowSet": held_list("m_rows", row_set),
    "_SRow": row,
    "_SRowSet": row_set,
}


def build():
    printers = gdb.printing.RegexpCollectionPrettyPrinter("zebapi")
    for kind, forms in ((Text, TEXTS), (List, LISTS)):
        for names, form in forms.items():
            printers.add_printer(names, f"^({names})$", lambda value, kind=kind, form=form: kind(value, form))
    return printers


gdb.printing.register_pretty_printer(None, build(), replace=True)
