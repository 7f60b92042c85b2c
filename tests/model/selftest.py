#!/usr/bin/env python3
"""Checks the model against expectations that were worked out by hand from the rules, and the model's tokenizer
against a second one that is nothing but the table of patterns: longest match, the earlier rule on a tie."""

import os
import random
import re
import signal
import sys
import tempfile
import threading

# The source tree stays free of compiled modules.
sys.dont_write_bytecode = True

import model  # noqa: E402

L1 = b'#line 1 "a.c"\n'


class Checks:
    def __init__(self):
        self.failures = 0
        self.count = 0

    def equal(self, what, expected, actual):
        self.count += 1
        if expected != actual:
            self.failures += 1
            print("FAILED %s\n  expected %r\n  actual   %r" % (what, expected, actual))

    def run(self, source, stdout, stderr=b"", status=0, words=(b"a.c",), files=None, stdin=b""):
        """Runs the model in the present folder over `a.c` and further files."""
        everything = dict(files or {})
        if source is not None:
            everything["a.c"] = source
        for name, data in everything.items():
            if os.path.dirname(name):
                os.makedirs(os.path.dirname(name), exist_ok=True)
            with open(name, "wb") as stream:
                stream.write(data)
        what = "%r %r" % (list(words), source)
        try:
            result = model.Run(list(words), lambda: stdin, 100000, 1000000)
        except (model.BudgetExceeded, RecursionError):
            self.equal("end of " + what, True, False)
            return
        for name in everything:
            os.remove(name)
        self.equal("stdout of " + what, stdout, result.stdout)
        self.equal("stderr of " + what, stderr, result.stderr)
        self.equal("status of " + what, status, result.status)


# The patterns in their order.  A comment's opening is listed with the kind that the finished comment returns.
RULES = [
    (rb"\r\n", model.TK_NEWLINE),
    (rb"\r", model.TK_NEWLINE),
    (rb"\n", model.TK_NEWLINE),
    (rb"\\\r", model.TK_CONTINUATION),
    (rb"\\\r\n", model.TK_CONTINUATION),
    (rb"\\\n", model.TK_CONTINUATION),
    (rb"[ \t\v\f]", model.TK_SPACE),
    (rb"#", ord("#")),
    (rb"##", model.TK_PASTE),
] + [(re.escape(c.encode()), ord(c)) for c in "(),?:"] + [
    (rb"\|\|", model.TK_OROR),
    (rb"&&", model.TK_ANDAND),
] + [(re.escape(c.encode()), ord(c)) for c in "|^&"] + [
    (rb"==", model.TK_EQ),
    (rb"!=", model.TK_NE),
    (rb"<", ord("<")),
    (rb">", ord(">")),
    (rb"<=", model.TK_LE),
    (rb">=", model.TK_GE),
    (rb"<<", model.TK_SHL),
    (rb">>", model.TK_SHR),
] + [(re.escape(c.encode()), ord(c)) for c in "+-*/%!~"] + [
    (word, kind) for word, kind in model.KEYWORDS.items()
] + [
    (rb'"(?:[^"\\\n]|\\"|\\\\)*"', model.TK_STRING),
    (rb"'(?:[^'\\\n]|\\[\"'?\\abfnrtv]|\\[0-7]{1,3}|\\x[0-9a-fA-F]+)+'", model.TK_CHAR),
    (rb"[A-Za-z_][A-Za-z_0-9]*", model.TK_IDENTIFIER),
    (rb"[1-9][0-9]*[Ll]?", model.TK_DEC_INT),
    (rb"0[0-7]*[Ll]?", model.TK_OCT_INT),
    (rb"0[xX][0-9a-fA-F]+[Ll]?", model.TK_HEX_INT),
    (rb"[1-9][0-9]*(?:[Uu][Ll]?|[Ll][Uu])", model.TK_DEC_UINT),
    (rb"0[0-7]*(?:[Uu][Ll]?|[Ll][Uu])", model.TK_OCT_UINT),
    (rb"0[xX][0-9a-fA-F]+(?:[Uu][Ll]?|[Ll][Uu])", model.TK_HEX_UINT),
    (rb"[^\n]", model.TK_OTHER),
]
RULES = [(re.compile(pattern, re.DOTALL), kind) for pattern, kind in RULES]


def table_tokens(data):
    """Tokens by the bare table; the data must hold no comment."""
    position = 0
    tokens = []
    while position < len(data):
        best = 0
        best_kind = None
        for pattern, kind in RULES:
            match = pattern.match(data, position)
            if match and match.end() - position > best:
                best = match.end() - position
                best_kind = kind
        text = b"\n" if best_kind == model.TK_NEWLINE else data[position:position + best]
        tokens.append((best_kind, text))
        position += best
    return tokens


def model_tokens(data, streams=None):
    lexer = model.Lexer(data, streams or model.Streams())
    tokens = []
    while True:
        kind = lexer.next()
        if kind == model.TK_END:
            return tokens, lexer.line
        tokens.append((kind, lexer.text))


def check_lexer(checks):
    pieces = [b"a", b"_x9", b"if", b"defined", b"_Pragma", b"ident", b"0", b"0x", b"0x1f", b"08", b"12", b"L", b"u",
              b"U",
              b"l", b'"', b"'", b"\\", b"\\n", b"\\x", b"7", b"9", b"#", b"|", b"&", b"=", b"!", b"<", b">", b"+", b"-",
              b"(", b")", b",", b"?", b":", b"^", b"%", b"~", b"*", b" ", b"\t", b"\v", b"\f", b"\r", b"\n", b"\0",
              b"\xff",
              b".", b"[", b"$", b"@", b"`"]
    chance = random.Random(7)
    for _ in range(4000):
        data = b"".join(chance.choice(pieces) for _ in range(chance.randint(0, 14)))
        checks.equal("tokens of %r" % data, table_tokens(data), model_tokens(data)[0])
    streams = model.Streams()
    tokens, line = model_tokens(b"/* a\r\nb\rc\n */", streams)
    checks.equal("comment token", [(model.TK_SPACE, b" ")], tokens)
    checks.equal("comment lines", 4, line)
    checks.equal("comment output", b"\n\n\n", bytes(streams.output))
    checks.equal("line comment", [(model.TK_SPACE, b" "), (model.TK_NEWLINE, b"\n"), (model.TK_IDENTIFIER, b"y")],
                 model_tokens(b"// x\r\ny")[0])
    checks.equal("continuation", 2, model_tokens(b"a\\\nb")[1])
    streams = model.Streams()
    model_tokens(b"a\n/* b\n**", streams)
    checks.equal("unterminated comment", b"3: unterminated comment.\n", bytes(streams.stderr))


def check_lines(checks):
    run = checks.run
    run(b"x\n#if 1 +\n#endif\n", L1 + b"x\n\n", b"a.c:2: Lexical element expected.\n", 1)
    run(b"#error e\nx\n", L1 + b'#line 2 "a.c"\nx\n', b"a.c:1: #error directive:  e.\n", 1)
    run(b"#define A 1\n#define A 2\n", L1, b'a.c:2: Warning: Macro "A" has an incompatible redefinition.\n')
    run(b"#define\nx\n", L1 + b"\nx\n", b"a.c:1: Invalid macro name.\n", 1)
    run(b"#include <no.h>\nx\n", L1 + b'#line 2 "a.c"\nx\n', b"a.c:1: Cannot open file: no.h.\n", 1)
    run(b"#if __LINE__ == 1\nT\n#endif\n", L1 + b'#line 2 "a.c"\nT\n\n')
    run(b"#define F(x) x\nF(1\n", L1 + b'#line 2 "a.c"\nF',
        b"a.c:3: The macro invocation is improperly terminated.\n", 1)
    run(b"#if 1\nx", L1 + b'#line 2 "a.c"\nx\n', b'a.c:2: Unterminated "#if" conditional.\n', 1)
    run(b'#line 10 "x.c"\na __LINE__\n#foo\n', L1 + b'#line 10 "x.c"\n#line 11 "x.c"\na 11\n',
        b"x.c:12: the indicated directive is not a recognized preprocessing directive.\n", 1)
    run(b"#line 20 foo\n__LINE__\n", L1 + b'#line 21 "a.c"\n21\n',
        b'a.c:20: Invalid format for "#line" directive.\n', 1)
    run(b"#line 0x10\n#line 010\n#line 0\n#line\n#line 7L\n", L1,
        b'a.c:1: Invalid format for "#line" directive.\na.c:2: Invalid format for "#line" directive.\n'
        b'a.c:3: Invalid line number.\na.c:4: Invalid format for "#line" directive.\n'
        b'a.c:5: Invalid format for "#line" directive.\n', 1)
    run(b'#line 5 "b.c" x\ny\n', L1 + b'#line 5 "b.c"\n#line 6 "b.c"\ny\n',
        b"b.c:5: Invalid characters appear before a new-line in the preprocessor directive.\n", 1)
    run(b"/* a\n*/ x\ny\n", L1 + b'\n#line 2 "a.c"\n  x\ny\n')
    run(b"a /* \n */ b\nc\n", L1 + b'a \n  b\n#line 3 "a.c"\nc\n')
    run(b"a\\\nb\nc\n", L1 + b'a\\\nb\n#line 3 "a.c"\nc\n')
    run(b"x", L1 + b"x\n")
    run(b"", L1)
    run(b" \t\\\n\nx\r\ny\rz", L1 + b'\n#line 3 "a.c"\nx\ny\nz\n')
    run(b"a /* b\n", L1 + b"a \n \n", b"2: unterminated comment.\n")


def check_conditionals(checks):
    run = checks.run
    run(b"#if 0\nx\n#endif\ny\n", L1 + b'\n\n#line 4 "a.c"\ny\n')
    run(b"#if 1\n#elif 1/0\nb\n#else\nc\n#endif\n", L1 + b"\n\n\n\n")
    run(b"#if 0\n#elif garbage(\nb\n#else\nc\n#endif\n", L1 + b'\n\n#line 5 "a.c"\nc\n\n',
        b"a.c:2: A function call is not allowed in a constant expression.\n", 1)
    run(b"#define X\n#ifdef X junk more\n#endif\n", L1 + b'#line 2 "a.c"\njunk more\n\n',
        b"a.c:2: Invalid characters appear before a new-line in the preprocessor directive.\n", 1)
    run(b"#ifdef X junk more\n#endif\n", L1 + b"\n\n",
        b"a.c:1: Invalid characters appear before a new-line in the preprocessor directive.\n", 1)
    run(b"#ifdef\nx\n#endif\ny\n", L1 + b'\n\n#line 4 "a.c"\ny\n',
        b'a.c:1: An identifier is expected after "#ifdef".\n', 1)
    run(b"#ifdef X // why\n#endif\n", L1 + b"\n")
    run(b"#if 0\n#\n#endif\nx\n", L1 + b"\n\n", b'a.c:5: Unterminated "#if" conditional.\n', 1)
    run(b"#if 0\n# /* c */ \n#endif\nx\n#endif\ny\n", L1 + b'\n\n\n#line 6 "a.c"\ny\n')
    run(b"#if 0\n#foo\n#define A 1\n#endif\nA\n", L1 + b'\n\n\n#line 5 "a.c"\nA\n')
    run(b"#\nx\n", L1 + b'#line 2 "a.c"\nx\n')
    run(b"#else\n#endif\n#elif 1\n", L1 + b"\n\n",
        b'a.c:1: No "#if" directive associated to "#else".\na.c:2: No "#if" directive associated to "#endif".\n'
        b'a.c:3: No "#if" directive associated to "elif".\n', 1)
    run(b"#if 1\n#else\n#else\n#elif 1\n#endif\n", L1 + b"\n\n\n",
        b'a.c:3: Cannot use another "#else" directive after an "#else".\n'
        b'a.c:4: Cannot use an "#elif" directive after an "#else".\n', 1)
    run(b"#if 0\n#else junk\n#endif more\n", L1 + b'#line 2 "a.c"\n junk\n more\n')
    run(b"#ifdef include\n#endif\n#ifndef ident\na\n#endif\n", L1 + b'\n#line 4 "a.c"\na\n\n')
    for expression, truth, messages in [
            (b"0x80000000 > 0", True, []), (b"-1 > 0", False, []), (b"-1 < 0u", False, []),
            (b"4294967296 == 0xffffffff", True, []), (b"99999999999 == 0xffffffff", True, []),
            (b"'abcde' == 0x61626364", True, ["Too many characters in character literal"]),
            (b"'\\377' == 0xffffffff", True, []), (b"'\\400' == 0", True, []), (b"'ab' == 0x6162", True, []),
            (b"-8 >> 1 == 0x7ffffffc", True, []), (b"1 << 33 == 2", True, []), (b"-7 / 2 == -3", True, []),
            (b"-7 % 2 == -1", True, []), (b"1 ? 2 : 0", True, []), (b"0 ? 1 : 0 ? 1 : 3", True, []),
            (b"1 ? 2", False, ['":" expected in constant expression']),
            (b"(1", False, ['")" expected']),
            (b"(1) 2", True, ["Invalid characters appear before a new-line in the preprocessor directive"]),
            (b"(1)(2)", False, ["A function call is not allowed in a constant expression"]),
            (b"FOO(1)", False, ["A function call is not allowed in a constant expression"]),
            (b"defined()", False, ["Identifier expected for 'defined' operator",
                                   '")" expected for "defined" operator']),
            (b"defined if", False, ["Identifier expected for 'defined' operator"]),
            (b"defined(X", False, ['")" expected for "defined" operator']),
            (b"!defined X && !defined ( Y )", True, []),
            (b"", False, ["Lexical element expected"]), (b"1 || ", False, ["Lexical element expected"]),
            (b"-(1u<2) < 0", False, []), (b"-(1<2) < 0", True, []), (b"1 + 2 * 3 == 7 && 2 | 4 ^ 4 & 5", True, [])]:
        output = b'#line 2 "a.c"\nT\n\n' if truth else b"\n\n"
        run(b"#if " + expression + b"\nT\n#endif\n", L1 + output,
            b"".join(b"a.c:1: " + message.encode() + b".\n" for message in messages), 1 if messages else 0)
    run(b"x\n#if (2 || 1/0)\ny\n#endif\n", L1 + b"x\n", b"", -signal.SIGFPE)
    run(b"#if (-2147483647 - 1) % -1\n#endif\n", L1, b"", -signal.SIGFPE)
    run(b"#define X 1\n#define D defined\n#if D X && defined(X) && D ( X )\nT\n#endif\n", L1 + b'#line 4 "a.c"\nT\n\n')


def check_macros(checks):
    def after(definitions, text, output, messages=(), status=0):
        """A text line after definitions, with its own line directive."""
        count = definitions.count(b"\n") + 1
        checks.run(definitions + text, L1 + b'#line %d "a.c"\n' % count + output,
                   b"".join(b"a.c:%d: " % count + message + b".\n" for message in messages), status)

    not_enough = b"There are not enough arguments in a macro invocation"
    too_many = b"A macro invocation has too many arguments"
    after(b"#define SQ(x) ((x)*(x))\n", b"y = SQ(a);\n", b"y = ((a)*(a));\n")
    after(b"#define A A+1\n", b"A A\n", b"A+1 A+1\n")
    after(b"#define F(x) x\n", b"F (1)F x\n", b"1 Fx\n")
    after(b"#define F(x) x\n", b"F\n(1) __LINE__\n", b"1 3\n")
    after(b"#define F(x) x\n", b"F\n#define A\n", b"\nF#define A\n")
    after(b"#define F(x,y) [x|y]\n", b"F(a,(b,c))F(,b)F(1,2,3)\n", b"[a|(b,c)][|b]F\n", [too_many], 1)
    after(b"#define F(x,y) [x|y]\n", b"F(a,) F(1,2,3,4)\n", b"F F4)\n", [not_enough, too_many], 1)
    after(b"#define F() 1\n#define G(x) x\n", b"F()F( )G()\n", b"11G\n", [not_enough], 1)
    after(b"#define f(a) a*g\n#define g(a) f(a)\n", b"f(2)(9)\n", b"2*f(9)\n")
    after(b"#define f(x) x\n", b"f(f)(1)\n", b"f(1)\n")
    after(b"#define f(x) x\n#define A A+1\n", b"f(A)\n", b"A+1\n")
    after(b"#define A(x) x\n#define B(y) A(y)\n", b"B(B(1))\n", b"1\n")
    after(b"#define E\n#define F(x) [ x ]\n", b"F(E)\n", b"[  ]\n")
    after(b"#define STR(x) #x\n", b'STR(  a   "b\\n"  c )\n', b'"a \\"b\\\\n\\" c"\n')
    after(b"#define STR(x) # x\n", b"STR('\\'' \\ \"\\\"\")STR()\n", b'"\'\\\\\'\' \\ \\"\\\\\\"\\""STR\n',
          [not_enough], 1)
    after(b"#define CAT(a,b) a##b\n", b"CAT(x,y) CAT(1, 2) CAT(,z) CAT(+,-)\n", b"xy 12 z +-\n")
    after(b"#define CAT a ## b\n", b"CAT\n", b"a ## b\n")
    after(b"#define F(x) L ## #x x ## ## b\n", b"F(k)\n", b'L"k" kb\n')
    after(b"#define G(x) ## x\n#define H(x) a x ##\n#define I(x) a # y\n", b"G(1)H(1)I(1)\n", b"a 1a\n",
          [b"'##' operator cannot be at the beginning of the replacement list",
           b"'##' operator cannot be at the end of the replacement list",
           b"Macro variable expected after '#' operator"], 1)
    after(b"#define C(a,b) a##b\n", b"x C(/,/) y\n", b"x   y\n")
    after(b"#define S /\n#define F(x) x/ z\n", b"F(S)\n", b"// z\n")
    after(b"#define F(x) <x>\n#define G(x) F(x/)\n", b"G(/)\n", b"< >\n")
    after(b"#define F(a,a) a\n", b"F(1,2)\n", b"2\n")
    # The argument is expanded once for each of the first two x; the two names then move their blanks before
    # themselves, and the joined "G()G()" is invoked twice without an argument.
    after(b"#define G(x) x\n#define F(x) x x x##x #x\n", b"F(G())\n", b' G GGG "G()"\n', [not_enough] * 4, 1)
    after(b"#define F(a,\nb) a+b\n", b"F(1,2)\n", b"1+2\n")
    after(b"#define A\\\nB 1\n", b"AB\n", b"1\n")
    after(b"#define F (x) x\n", b"F\n", b"(x) x\n")
    after(b"#define if 1\n", b"if defined else\n", b"1 defined else\n")
    warning = b'a.c:2: Warning: Macro "A" has an incompatible redefinition.\n'
    checks.run(b"#define A 1\n#define A() 1\nA\n", L1 + b'#line 3 "a.c"\n1\n')
    checks.run(b"#define A a  b \n#define A ab\n#define A /**/ab\nA\n", L1 + b'#line 4 "a.c"\nab\n', warning)
    checks.run(b"#undef A B\nx\n", L1 + b"\nx\n")
    checks.run(b"#define #undef A\n", L1, b"a.c:1: Invalid macro name.\n", 1)
    checks.run(b"#define F(a,) 1\n#define F(a a) 1\n#define F(1\n#undef\nF\n", L1 + b'\n#line 5 "a.c"\nF\n',
               b"a.c:1: An identifier is expected.\na.c:2: An ')' or ',' was expected.\n"
               b"a.c:3: An identifier is expected.\na.c:4: Invalid macro name.\n", 1)
    checks.run(b"#define A 1\\\n2 /\\\n/ 3\nA;\n", L1 + b'#line 4 "a.c"\n12  ;\n')


def check_hide_sets(checks):
    """What an argument's tokens keep on their way through invocations."""
    def after(definitions, text, output):
        count = definitions.count(b"\n") + 1
        checks.run(definitions + text, L1 + b'#line %d "a.c"\n' % count + output)

    # A{A} goes through g's argument, whose ")" has {f}, and stays hidden.
    after(b"#define A A+1\n#define g(x) x\n#define f(x) g(x)\n", b"f(A)\n", b"A+1\n")
    # The ")" is the file's and has no set, the A of the argument has its own.
    after(b"#define F(p) p\n#define A F((A)\n", b"A)\n", b"(A)\n")
    checks.run(b"#define F(p) p\n#define A F((A)\n#if !A)\nT\n#endif\n", L1 + b'#line 4 "a.c"\nT\n\n')
    # An argument that names its own macro is expanded once, and # sees what the outer macro has made of it.
    after(b"#define get(n) (c++, get(n))\n#define check(e) if(!(e)) fail(#e)\n#define verify(e) check(e)\n",
          b"verify(get(1));\n", b'if(!((c++, get(1)))) fail("(c++, get(1))");\n')
    # The second f comes out of the first one's expansion; with f(2)(9), f's name has the set of g's invocation.
    after(b"#define f(x) x\n", b"f(f)(1)\n", b"f(1)\n")
    after(b"#define f(a) a*g\n#define g(a) f(a)\n", b"f(2)(9)\n", b"2*f(9)\n")
    # Through three invocations, in both of two arguments, and by way of each other.
    after(b"#define A B a\n#define B A b\n#define f(x) g(x,B)\n#define g(x,y) h(y|x)\n#define h(x) <x>\n",
          b"f(A)\n", b"<B a b|A b a>\n")
    # The terminator's set comes in addition: N, no invocation for want of a "(", is hidden by the ")" that N() made.
    after(b"#define k(z) z\n#define f(x) x\n#define lp (\n#define N() )\n", b"k(f lp N N())()\n", b"N()\n")
    # What # and ## make has the set of the invocation alone, whatever was in the argument.
    after(b"#define A A+1\n#define J(x,y) x##y\n#define f(x) J(,x)\n", b"f(A)\n", b"A+1+1\n")

    merging = b"#define h(x) x\n#define g(z) z\n#define k(z) g(z)\n"
    # k hands A and B to g side by side; g's argument has one name AB.  It is hidden if either half came from AB,
    after(merging + b"#define AB A\n", b"k(h(AB)B)\n", b"AB\n")
    after(merging + b"#define AB B\n", b"k(h(A)h(AB))\n", b"AB\n")
    # and from nothing else: A came from AB, which is not in the way of AC.
    after(merging + b"#define AB A\n#define AC D\n", b"k(h(AB)C)\n", b"D\n")
    after(merging + b"#define AB A\n", b"k(h(A)B)\n", b"A\n")
    # Each token for itself: what hides one AB of an argument leaves the other alone.
    after(merging + b"#define AB A\n", b"k(h(AB)B h(A)B)\n", b"AB A\n")
    # A name in three parts, of which the middle one has the set; the names beside it are as they were.
    after(merging + b"#define ABC B\n", b"k(h(A)h(ABC)h(C))\n", b"ABC\n")
    after(merging + b"#define AB A\n#define C c\n", b"k(h(AB)B+C)\n", b"AB+c\n")
    after(merging + b"#define AB A\n#define B D\n", b"k(h(AB) B)\n", b"A D\n")
    # A number behind a word is part of the word, a number before it is not.
    after(merging + b"#define x1 1\n", b"k(h(x)h(x1))\n", b"x1\n")
    after(merging + b"#define x1 1\n", b"k(h(x)1)\n", b"1\n")
    after(merging + b"#define x1 x\n", b"k(1h(x1)1)\n", b"1x1\n")
    # A lone quote takes the quote of a literal behind it; the name A falls out of the literal, and its set with it.
    after(merging + b'#define A "A"\n', b'k("\nA)\n', b'" "A"\n')
    after(merging + b'#define A "B"\n#define B b\n', b'k("\nA)\n', b'" "b"\n')
    # A literal that two lone quotes make has the sets of all that is in it, and so have the names that fall out of it
    # when m puts another quote before it: BC is hidden because the first quote came from it.
    fallen = merging + b'#define m(z) g(" z)\n'
    after(fallen + b'#define BC "\n', b'm(k(h(BC)h(B)C"\n))\n', b'" "BC"\n')
    after(fallen + b'#define Q "\n#define BC D\n', b'm(k(h(Q)h(B)C"\n))\n', b'" "D"\n')


def check_rest(checks):
    run = checks.run
    invalid = b"Invalid characters appear before a new-line in the preprocessor directive.\n"
    run(b'#define H "x.h"\n#include H\ny\n', L1 + b'#line 1 "x.h"\nx\n#line 3 "a.c"\ny\n', files={"x.h": b"x"})
    run(b'#include "x.h" extra\n', L1 + b'#line 1 "x.h"\n1 "x.h"\n#line 2 "a.c"\n', b"a.c:1: " + invalid, 1,
        files={"x.h": b"__LINE__ __FILE__"})
    run(b'#include ""\n#include <>\n#include\n#include <a.h\n#include <a.c>\n', L1,
        b"a.c:1: An expected file name is missing.\na.c:2: An expected file name is missing.\n"
        b"a.c:3: Filename expected after #include directive.\na.c:4: Filename expected after #include directive.\n"
        b"a.c:5: Cannot open file: a.c.\n", 1)
    run(None, b'#line 1 "s/m.c"\n#line 1 "s/b.h"\nB\n#line 2 "s/m.c"\n#line 1 "./c.h"\nC\n#line 3 "s/m.c"\n',
        words=(b"-I", b".", b"s/m.c"),
        files={"s/m.c": b'#include "b.h"\n#include <c.h>\n', "s/b.h": b"B\n", "c.h": b"C\n"})
    run(b'#if 1\n#include "x.h"\n#endif\n', L1 + b'#line 1 "x.h"\n\n#line 3 "a.c"\n\n',
        b'x.h:1: No "#if" directive associated to "#endif".\nx.h:3: Unterminated "#if" conditional.\n', 1,
        files={"x.h": b"#endif\n#if 1\n"})
    run(b"#pragma  once A\nx\n", L1 + b"#pragma   once A\nx\n")
    run(b'x _Pragma("a \\"b\\"") y\n', L1 + b'x \n#pragma a "b"\n y\n')
    run(b"_Pragma(x) y\n", L1 + b") y\n", b"a.c:1: _Pragma requires a parenthesized string literal.\n", 1)
    run(None, b'#line 1 "stdin"\n2 a\n', words=(b"-DX=2", b"-DX=3", b"-D__LINE__=1", b"-DY"),
        stdin=b"X a\n#define Y 1\n")
    run(None, b'#line 1 "a\\\\b"\n"a\\b"\n', words=(b"-s", b"a\\b"), stdin=b"__FILE__\n")
    run(None, b"", b"FATAL ERROR: cannot open nothing.c.\n", 1, words=(b"nothing.c",))
    run(None, b"", b"qnpp: unknown option '-x' ('-h' for help)\n", 1, words=(b"-x", b"-h"))
    run(None, model.HELP_TEXT, b"qnpp: argument(s) 'a -o b' is(are) ignored\n", 1, words=(b"a", b"-h", b"-o", b"b"))
    run(None, model.HELP_TEXT, b"qnpp: argument(s) 'a ' is(are) ignored\n", 1, words=(b"a", b"--help"))
    run(None, b"", b"qnpp: missing macro for '-D' option number 2\n", 1, words=(b"-DA", b"-D", b"NAME"))
    run(None, b"", b"qnpp: missing path name for '-I' option number 1\n", 1, words=(b"-I", b"-s", b"x"))
    run(None, b'#line 1 "stdin"\n', words=(b"-I", b"-Ifoo"))
    run(None, b"", b"qnpp: '-s' option appears more than once\n\tonly the last one will be considered\n"
        b"qnpp: no source name provided to '-s' option\n", 1, words=(b"-s", b"a", b"-s"))
    run(None, b"", b"qnpp: cannot provide more than one source file\n", 1, words=(b"a.c", b"b.c"))
    run(None, b"", b"qnpp: cannot open output file 'no/where'\n", 1, words=(b"-o", b"no/where"))


def main():
    checks = Checks()
    here = os.getcwd()
    with tempfile.TemporaryDirectory() as folder:
        os.chdir(folder)
        for part in (check_lexer, check_lines, check_conditionals, check_macros, check_hide_sets, check_rest):
            part(checks)
        os.chdir(here)
    print("%d checks, %d failures" % (checks.count, checks.failures))
    return 1 if checks.failures else 0


if __name__ == "__main__":
    sys.setrecursionlimit(1000000)
    threading.stack_size(1 << 28)
    results = []
    thread = threading.Thread(target=lambda: results.append(main()))
    thread.start()
    thread.join()
    sys.exit(results[0] if results else 70)
