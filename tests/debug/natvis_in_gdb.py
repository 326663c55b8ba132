"""Run by GDB in the stopped probe: evaluates each expression of the visualizer on an object of its type.

Prints one line for each that names what is not there, and the number of expressions. NATVIS names the file."""
import os
import re
import xml.etree.ElementTree as ElementTree

import gdb

SPACE = "{http://schemas.microsoft.com/vstudio/debugger/natvis/2010}"
# An object of each type.
OBJECTS = {
    "zeb::CStringT<char>": "values.narrow", "zeb::CStringT<wchar_t>": "values.wide", "zeb::CArray<*>": "values.numbers",
    "zeb::CPtrArray": "values.pointers", "zeb::CMap<*>": "values.map", "zeb::CComPtr<*>": "values.noObject",
    "CZebBinary": "values.binary", "CZebBinArray": "values.binaries", "CZebOnePropVal": "view",
    "CZebPropValArray": "values.properties", "CZebPropTagArray": "values.tags", "CZebPropProblemArray": "values.problems",
    "CZebRow": "row", "CZebRowSet": "values.rows", "CZebRestriction": "values.restriction", "CZebSortOrder": "values.order",
    "CZebException": "exception", "CZebIProp": "values.folder", "CZebTable": "values.table", "CZebSession": "values.session",
    "_SBinary": "(*values.binary.m_binary)", "_SPropTagArray": "(*values.tags.m_tags)",
    "_SPropValue": "(*values.properties.m_values)", "_SRow": "values.rows.m_rows->aRow[0]", "_SRowSet": "(*values.rows.m_rows)",
    "_SRestriction": "(*values.restriction.m_node)", "_SSortOrderSet": "(*values.order.m_sortSet)",
    "_SSortOrder": "values.order.m_sortSet->aSort[0]",
}
FORMAT = re.compile(r",(?:\[([^\]]*)\])?(?:s|su|X|x|hr)?$")


def members(kind):
    """The names of a type's members, those of its bases too."""
    for field in kind.strip_typedefs().fields():
        if field.is_base_class:
            yield from members(field.type)
        else:
            yield field.name


def names_of(kind):
    """A type's name, and those of its bases."""
    kind = kind.strip_typedefs()
    yield str(kind)
    for field in kind.fields():
        if field.is_base_class:
            yield from names_of(field.type)


def type_of(thing):
    kind = gdb.parse_and_eval(thing).type
    return kind.target() if kind.code == gdb.TYPE_CODE_REF else kind


def expressions(element):
    """The expressions of a type's element."""
    for each in element.iter():
        if "Condition" in each.attrib:
            yield each.attrib["Condition"]
        if each.tag == SPACE + "DisplayString":
            yield from re.findall(r"(?<!{){([^{}]+)}(?!})", each.text.replace("{{", "").replace("}}", ""))
        elif each.tag[len(SPACE):] in ("StringView", "Item", "ExpandedItem", "Size", "ValuePointer"):
            yield each.text


def evaluate(expression, thing):
    """Raises gdb.error or ValueError when the expression names something that the object does not have."""
    formatted = FORMAT.search(expression)
    if formatted:
        if formatted[1]:
            evaluate(formatted[1], thing)
        expression = expression[:formatted.start()]
    known = set(members(type_of(thing)))

    def qualified(name):
        if name[0] not in known:
            raise ValueError(f"no member {name[0]}")
        return f"({thing}).{name[0]}"
    found = gdb.parse_and_eval(re.sub(r"(?<![\w.])(?<!->)[A-Za-z_]\w*", qualified, expression))
    str(found.type)


def bare(name):
    return re.sub(r"<.*", "", name)


def check():
    count = 0
    seen = set()
    for element in ElementTree.parse(os.environ["NATVIS"]).getroot().iter(SPACE + "Type"):
        name = element.attrib["Name"]
        thing = OBJECTS.get(name)
        if thing is None:
            print(f"NATVIS {name}: the test has no object of this type")
            continue
        seen.add(name)
        names = list(names_of(type_of(thing)))
        if bare(name) not in map(bare, names):
            print(f"NATVIS {name}: {thing} is a {names[0]}")
        for expression in expressions(element):
            count += 1
            try:
                evaluate(expression, thing)
            except (gdb.error, ValueError) as problem:
                print(f"NATVIS {name}: '{expression}': {problem}")
    for name in OBJECTS.keys() - seen:
        print(f"NATVIS {name}: not in the file")
    print(f"NATVIS {count} expressions")


check()
