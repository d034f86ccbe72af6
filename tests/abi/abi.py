#!/usr/bin/env python3
"""The binary interface of the built library as text, held against a reference that is checked in.

usage: abi.py compare REFERENCE LIBRARY CONTRACT   fails, and shows the difference, when they differ
       abi.py rewrite REFERENCE LIBRARY CONTRACT   writes the reference anew: a new binary interface

LIBRARY is the shared object; CONTRACT is Contract.cpp as a shared object with debug information.
Needs abidw (abigail-tools), nm and readelf.
"""

import difflib
import os
import re
import subprocess
import sys
import xml.etree.ElementTree as ElementTree

# In the order of the reference.
CLASSES = [
    "CommunicationsServiceIfc", "CommunicationsServiceEventIfc", "CommunicationsServiceProxy",
    "CommunicationsServiceEventInvoker", "CallPartyInfo", "Executable", "Proxy", "Invoker",
    "ProxyRequest", "FrameworkContext", "InvokerResponse", "MarloException",
]
ENUMERATIONS = [
    "sfiResult", "sfiServiceState", "sfiFeature", "sfiRefuseCall", "sfiCancelCallBackType",
    "sfiForwardingType", "CSTAEventCause",
]


def run(*command, text=None):
    result = subprocess.run(command, input=text, stdout=subprocess.PIPE, text=True, check=False)
    if result.returncode != 0:
        sys.exit(f"abi: {command[0]} failed on {command[-1]}")
    return result.stdout


def readable(symbols):
    names = run("c++filt", text="\n".join(symbols)).splitlines()
    long_string = "std::__cxx11::basic_string<char, std::char_traits<char>, std::allocator<char> >"
    names = [name.replace(long_string, "std::string") for name in names]
    return [re.sub(r", std::allocator<(std::string|int) ?> ?>", ">", name) for name in names]


def exported(library):
    """Name of each defined dynamic symbol; of tables and type information also the size."""
    # Whoever derives from these has their tables too; they are here or not as the compiler likes.
    optional = {"_ZTV10Executable", "_ZTV5Proxy", "_ZTV7Invoker", "_ZTV24CommunicationsServiceIfc",
                "_ZTV29CommunicationsServiceEventIfc"}
    rows = []
    for line in run("nm", "-D", "--defined-only", "-S", library).splitlines():
        _, size, kind, name = line.split()
        if name in optional:
            continue
        rows.append(f"{name} {int(size, 16)} bytes" if kind in "VDRB" else name)
    return sorted(rows)


def undefined(library):
    """What the framework has to define: the undefined symbols without a library's version."""
    names = [line.split()[-1] for line in run("nm", "-D", "--undefined-only", library).splitlines()]
    optional = {"__cxa_finalize", "__gmon_start__", "_ITM_deregisterTMCloneTable",
                "_ITM_registerTMCloneTable"}
    return sorted(name for name in names if "@" not in name and name not in optional)


def needed(library):
    lines = run("readelf", "-dW", library).splitlines()
    return [re.search(r"\((NEEDED|SONAME)\).*\[(.*)\]", line).expand(r"\1 \2")
            for line in lines if "(NEEDED)" in line or "(SONAME)" in line]


class Types:
    def __init__(self, contract):
        root = ElementTree.fromstring(run("abidw", "--no-corpus-path", contract))
        self.by_id = {node.get("id"): node for node in root.iter() if node.get("id")}
        self.classes = {node.get("name"): node for node in root.iter("class-decl")
                        if node.get("is-declaration-only") is None}
        self.enumerations = {node.get("name"): node for node in root.iter("enum-decl")}

    def name(self, type_id):
        node = self.by_id[type_id]
        if node.tag == "pointer-type-def":
            return self.name(node.get("type-id")) + "*"
        if node.tag == "array-type-def":
            lengths = "".join(f"[{part.get('length')}]" for part in node.findall("subrange"))
            return self.name(node.get("type-id")) + lengths
        return node.get("name") or node.tag

    def lines_of_class(self, name):
        node = self.classes.get(name)
        if node is None:
            sys.exit(f"abi: no class {name} in the debug information")
        yield f"{name}: {int(node.get('size-in-bits')) // 8} bytes"
        for base in node.findall("base-class"):
            offset = int(base.get("layout-offset-in-bits")) // 8
            yield f"  base at {offset}: {self.name(base.get('type-id'))}"
        for member in node.findall("data-member"):
            offset = member.get("layout-offset-in-bits")
            if offset is not None:
                variable = member.find("var-decl")
                yield (f"  data at {int(offset) // 8}: {self.name(variable.get('type-id'))} "
                       f"{variable.get('name')}")
        slots = []
        for member in node.findall("member-function"):
            if member.get("vtable-offset") is not None:
                function = member.find("function-decl")
                result = self.name(function.find("return").get("type-id"))
                slots.append((int(member.get("vtable-offset")), result,
                              function.get("mangled-name") or function.get("name")))
        slots.sort()
        for (slot, result, _), signature in zip(slots, readable([slot[2] for slot in slots])):
            result = "std::string" if re.match("string$|basic_string<", result) else result
            # Compilers describe the place of a destructor's pair of slots differently.
            yield "  slots 0, 1: destructor" if "~" in signature else (
                f"  slot {slot}: {result} {signature}")

    def lines_of_enumeration(self, name):
        node = self.enumerations.get(name)
        if node is None:
            sys.exit(f"abi: no enumeration {name} in the debug information")
        size = int(self.by_id[node.find("underlying-type").get("type-id")].get("size-in-bits") or 32)
        yield f"{name}: {size // 8} bytes"
        for enumerator in node.findall("enumerator"):
            yield f"  {enumerator.get('value')} {enumerator.get('name')}"


def describe(library, contract):
    types = Types(contract)
    lines = ["# Exported"] + exported(library)
    lines += ["", "# Expected from the framework"] + undefined(library)
    lines += ["", "# Loaded with it"] + needed(library)
    lines += ["", "# Classes"]
    for name in CLASSES:
        lines += types.lines_of_class(name)
    lines += ["", "# Enumerations"]
    for name in ENUMERATIONS:
        lines += types.lines_of_enumeration(name)
    return [line + "\n" for line in lines]


def main(arguments):
    if len(arguments) != 4 or arguments[0] not in ("compare", "rewrite"):
        sys.exit(__doc__)
    command, reference, library, contract = arguments
    now = describe(library, contract)
    if command == "rewrite":
        with open(reference, "w", encoding="utf-8") as file:
            file.writelines(now)
        return 0
    with open(reference, encoding="utf-8") as file:
        held = file.readlines()
    if held == now:
        print(f"{len(now)} lines as in {os.path.basename(reference)}")
        return 0
    sys.stdout.writelines(difflib.unified_diff(held, now, "reference", "built", n=1))
    print("The binary interface has changed. If that is meant: raise COMMUNICATIONS_SERVICE_SOVERSION"
          "\nin CMakeLists.txt and write the reference anew with the target abi-rewrite.")
    return 1


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
