#!/usr/bin/env python3
"""Tells what programs that were linked with the library rely on, in lines that can be compared: types and symbols.

    abidw ... | interface.py

What abidw writes is for the most part the inside of the standard library, which is not ours to promise. Without it,
abidiff does not see any more what is in a std::vector.
"""

import sys
import xml.etree.ElementTree as ElementTree

FORMS = {"pointer-type-def": "{}*", "qualified-type-def": "const {}"}
TYPES = {}  # By id: the element, and the name of what it stands in.


def note(element, scope):
    for child in element:
        name = child.get("name", "")
        if "id" in child.attrib:
            TYPES[child.get("id")] = (child, scope + name)
        note(child, scope + name + "::" if child.tag in ("namespace-decl", "class-decl") else scope)


def name_of(type_id):
    element, name = TYPES[type_id]
    if element.tag in FORMS:
        return FORMS[element.tag].format(name_of(element.get("type-id")))
    if element.tag == "reference-type-def":
        return name_of(element.get("type-id")) + ("&" if element.get("kind") == "lvalue" else "&&")
    if element.tag == "function-type":
        parameters = ", ".join(name_of(parameter.get("type-id")) for parameter in element.iter("parameter"))
        return f"{name_of(element.find('return').get('type-id'))}({parameters})"
    return name


def lines_of(element, name):
    if element.tag == "enum-decl":
        yield "enum " + name
        for enumerator in element.iter("enumerator"):
            yield f"  {enumerator.get('value'):>3} {enumerator.get('name')}"
    elif element.tag == "typedef-decl" and name_of(element.get("type-id")) != name:
        yield f"type {name} = {name_of(element.get('type-id'))}"
    elif element.tag == "class-decl" and "size-in-bits" in element.attrib:
        yield f"{int(element.get('size-in-bits')) // 8:>3} {name}"
        for member in element.findall("data-member"):
            variable = member.find("var-decl")
            offset = int(member.get("layout-offset-in-bits")) // 8
            yield f"  {offset:>3} {variable.get('name')}: {name_of(variable.get('type-id'))}"


corpus = ElementTree.parse(sys.stdin).getroot()
note(corpus, "")
print("soname", corpus.get("soname"))
described = {}
for type_element, type_name in TYPES.values():
    if type_name.startswith(("qnpp::", "Qn")):
        described[type_name] = "\n".join(lines_of(type_element, type_name)) or described.get(type_name, "")
print("\n".join(text for _, text in sorted(described.items()) if text))
for symbol in sorted(f"{e.get('name')}@{e.get('version')}" for e in corpus.iter("elf-symbol")):
    print(symbol)
