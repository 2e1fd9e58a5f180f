#!/usr/bin/env python3
"""Writes a text-based stub (.tbd) of a macOS library from sources that do not depend on this project.

A source is one of
  AST.json  what C headers declare: clang's syntax tree of them, which has the linker's name of each function;
  LIST.txt  names as the linker sees them, one a line;
  a library of this machine (.so, .a): what it exports. Most names are the same on both systems.

A mangled name spells its types, and a few types differ between the systems. --objects FOLDER allows for them: a name
that an object in FOLDER needs is offered as well if a library exports it once those types are made equal.
"""

import argparse
import json
import pathlib
import re
import subprocess
import sys


TRAITS = "char, std::char_traits<char>"
ABBREVIATED = {  # types with an abbreviation in mangled names
    "istream": f"std::basic_istream<{TRAITS} >",
    "ostream": f"std::basic_ostream<{TRAITS} >",
    "string": f"std::basic_string<{TRAITS}, std::allocator<char> >",
}


def output(*command, text=None):
    return subprocess.run(command, input=text, stdout=subprocess.PIPE, check=True, text=True).stdout


def declared(tree):
    nodes = json.loads(pathlib.Path(tree).read_text(encoding="utf-8"))["inner"]
    return {
        node["mangledName"]
        for node in nodes
        if node["kind"] in ("FunctionDecl", "VarDecl") and node.get("storageClass") != "static" and "mangledName" in node
    }


def listed(path):
    lines = pathlib.Path(path).read_text(encoding="utf-8").splitlines()
    return {line for line in lines if line and not line.startswith("#")}


def exported(library):
    """Exported names: Mach-O prefixes an underscore; ELF may append a version."""
    table = [] if library.endswith(".a") else ["-D"]
    lines = output("llvm-nm", *table, "-g", "--defined-only", "--format=just-symbols", library).splitlines()
    return {"_" + line.split("@")[0] for line in lines if line and not line.endswith(":")}


def needed(folder):
    objects = [str(path) for path in pathlib.Path(folder).rglob("*.o")]
    lines = output("llvm-nm", "-u", "--quiet", "--format=just-symbols", *objects).splitlines()
    return {line for line in lines if line.startswith("__Z")}


def readable(names):
    """Yields each name with its demangled form, in which types that differ between the systems are made equal."""
    names = list(names)
    lines = output("llvm-cxxfilt", text="\n".join(name[1:] for name in names)).splitlines()
    for name, line in zip(names, lines, strict=True):
        line = line.replace("[abi:cxx11]", "")  # libstdc++ marks functions that return its std::string
        line = re.sub(r"\bstd::(__1|__cxx11)::", "std::", line)
        line = re.sub(r"\bstd::(ostream|istream|string)\b", lambda match: ABBREVIATED[match[1]], line)
        line = line.replace("long long", "long")  # behind uint64_t and intmax_t
        line = re.sub(r"(\du?)ll\b", r"\1l", line)
        line = line.replace("_IO_FILE*", "__sFILE*")  # behind FILE
        yield name, line


def counterparts(folder, exports):
    offered = {text for _, text in readable(exports)}
    return {name for name, text in readable(needed(folder)) if text in offered}


def write(stub, target, install_name, names):
    platform = target.split("-")[0] + "-macos"
    symbols = ",\n".join(f"    '{name}'" for name in sorted(names))
    text = f"""--- !tapi-tbd
tbd-version: 4
targets: [ {platform} ]
install-name: '{install_name}'
exports:
  - targets: [ {platform} ]
    symbols: [
{symbols} ]
...
"""
    pathlib.Path(stub).write_text(text, encoding="utf-8")


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("target")
    parser.add_argument("stub")
    parser.add_argument("install_name")
    parser.add_argument("sources", nargs="+")
    parser.add_argument("--objects", help="folder of objects whose names may differ by types")
    parser.add_argument("--prefix", default="", help="of the names to take; headers include other libraries' headers")
    arguments = parser.parse_args()

    names = set()
    exports = set()
    for source in arguments.sources:
        if source.endswith(".json"):
            names |= declared(source)
        elif source.endswith(".txt"):
            names |= listed(source)
        else:
            exports |= exported(source)
    names |= exports
    if arguments.objects:
        names |= counterparts(arguments.objects, exports)
    names = {name for name in names if name.startswith(arguments.prefix)}
    if not names:
        sys.exit(f"no names for {arguments.stub}")
    write(arguments.stub, arguments.target, arguments.install_name, names)


main()
