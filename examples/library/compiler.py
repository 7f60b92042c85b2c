#!/usr/bin/env python3
"""compiler.cpp once more, in Python, which needs nothing but the shared library:

    compiler.py <libqnpp.so.1> <name of a file>...
"""

import ctypes
import sys
from ctypes import POINTER, c_char_p, c_int, c_int32, c_size_t, c_uint64, c_void_p

FILES = {
    b"player.idl": b'#include "common.idl"\nplay(int track);\n#if EDITION >= 2\nTOGGLE(shuffle)\n#endif\n',
    b"common.idl": b"#define TOGGLE(name) set_##name(int on);\n\nping(void);\n",
    b"strange.idl": b"ping(void);\n\nskip;\n",
    b"broken.idl": b'#include "deeper.idl"\n',
    b"deeper.idl": b'ping(void);\n#include "nowhere.idl"\n',
    b"zero.idl": b"ping(void);\n#if 1 / 0\n",
    b"endless.idl": b'#include "endless.idl"\n',
}
CLEAN, DIVISION_BY_ZERO, LIMIT_REACHED = 0, 2, 4


class Place(ctypes.Structure):
    _fields_ = [("file", c_char_p), ("line", c_int32)]

    def __str__(self):
        return f"{self.file.decode()}:{self.line}"


class Diagnostic(ctypes.Structure):
    _fields_ = [("severity", c_int), ("identifier", c_char_p), ("place", Place), ("message", c_char_p),
                ("text", c_char_p), ("includeChain", POINTER(Place)), ("includeChainSize", c_size_t)]


class IncludeRequest(ctypes.Structure):
    _fields_ = [("name", c_char_p), ("isQuoted", c_int), ("place", Place), ("includerPath", c_char_p)]


class Limits(ctypes.Structure):
    _fields_ = [("includeDepth", c_uint64), ("expansionWork", c_uint64), ("outputBytes", c_uint64),
                ("milliseconds", c_uint64)]


Resolver = ctypes.CFUNCTYPE(c_int, c_void_p, POINTER(IncludeRequest), c_void_p)
DiagnosticSink = ctypes.CFUNCTYPE(c_int, c_void_p, POINTER(Diagnostic))

FUNCTIONS = {  # What each one returns, and what it is given.
    "QnNewPreprocessor": (c_void_p,),
    "QnFreePreprocessor": (None, c_void_p),
    "QnDefine": (None, c_void_p, c_char_p),
    "QnSetResolver": (None, c_void_p, Resolver, c_void_p),
    "QnSetDiagnosticSink": (None, c_void_p, DiagnosticSink, c_void_p),
    "QnSetLimits": (None, c_void_p, POINTER(Limits)),
    "QnSetLineDirectives": (None, c_void_p, c_int),
    "QnSetLineMap": (None, c_void_p, c_int),
    "QnIncludeText": (None, c_void_p, c_char_p, c_char_p, c_size_t),
    "QnRunText": (c_int, c_void_p, c_char_p, c_size_t, c_char_p),
    "QnGetOutput": (POINTER(ctypes.c_char), c_void_p, POINTER(c_size_t)),
    "QnGetEnd": (Place, c_void_p),
    "QnCountDependencies": (c_size_t, c_void_p),
    "QnGetDependency": (c_char_p, c_void_p, c_size_t),
    "QnFindLine": (Place, c_void_p, c_uint64),
}


def load(path):
    library = ctypes.CDLL(path)
    for name, (result, *parameters) in FUNCTIONS.items():
        function = getattr(library, name)
        function.restype, function.argtypes = result, parameters
    return library


qnpp = load(sys.argv[1])


@Resolver
def resolve(_, request, include):
    name = request[0].name
    if name in FILES:
        qnpp.QnIncludeText(include, name, FILES[name], len(FILES[name]))
    return 0


@DiagnosticSink
def show(_, diagnostic):
    told = diagnostic[0]
    print(told.text.decode(), end="")
    for place in told.includeChain[:told.includeChainSize]:
        print(f"  included from {place}")
    return 0


def compile_requests(preprocessor):
    size = c_size_t()
    output = qnpp.QnGetOutput(preprocessor, size)[:size.value]
    for number, request in enumerate(output.decode().split("\n"), 1):
        if request:
            word = "void" if "(" in request else "no request:"
            print(f"{word} {request} // {qnpp.QnFindLine(preprocessor, number)}")
    for i in range(qnpp.QnCountDependencies(preprocessor)):
        print("// needs", qnpp.QnGetDependency(preprocessor, i).decode())


def main():
    preprocessor = qnpp.QnNewPreprocessor()
    qnpp.QnDefine(preprocessor, b"EDITION=2")
    qnpp.QnSetResolver(preprocessor, resolve, None)
    qnpp.QnSetDiagnosticSink(preprocessor, show, None)
    qnpp.QnSetLineDirectives(preprocessor, 0)
    qnpp.QnSetLineMap(preprocessor, 1)
    qnpp.QnSetLimits(preprocessor, Limits(includeDepth=20, expansionWork=1_000_000))
    for name in map(str.encode, sys.argv[2:]):
        status = qnpp.QnRunText(preprocessor, FILES[name], len(FILES[name]), name)
        if status == CLEAN:
            compile_requests(preprocessor)
        elif status == DIVISION_BY_ZERO:
            print("division by zero at", qnpp.QnGetEnd(preprocessor))
        elif status == LIMIT_REACHED:
            print("too much at", qnpp.QnGetEnd(preprocessor))
    qnpp.QnFreePreprocessor(preprocessor)


main()
