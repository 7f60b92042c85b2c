"""The rule that line directives exist for: a text line stands in the output at a place that leads back to its own file
and line.

A project is written at random. Some of its words are marks: each is unique, is no macro, and is written down together
with the file and the line where it stands. After the run every mark of a group that is kept must stand in the output at
that place, in the order of reading, as often as its file is included. A mark of a skipped group or of a comment must
not stand there at all.

Not every place of a text can be told by line directives. Left out are the following, and nothing else; the examples are
whole inputs, with "\\n" for a line end.

- Words that a macro makes or takes. `F(MARK)\\n`: the word is the macro's then, and stands where the expansion stands.
- Words behind the ")" of an invocation that spans lines. `F(1,\\n2) MARK\\n`: the whole invocation is one output line,
  that of its name, and the rest of the line follows it.
- The first word of the line behind a function-like macro's name without arguments. `F\\nMARK\\n`: the white space is
  looked through for a "(" and comes out before the name, so that the output reads `FMARK`. A line behind such a name
  that begins with something else is in.
- A directive behind such a name, or inside arguments. `F\\n#define A MARK\\n`: it is text then.
- Words of a text line whose leading white space holds a continuation, and what follows up to the next line directive.
  `\\\\\\nMARK\\n`: the line directive is written when the first word is reached, in line 2, and the white space with
  its line end after it. Before a directive the same white space is harmless, and in.
- Words behind a `_Pragma` on its line, and what follows up to the next line directive when comments over several lines
  come into it. `x _Pragma("p") MARK\\n`: the operator takes two lines of the output for itself. The output line counts
  them, but does not count line ends inside comments, so that `x _Pragma("p")\\n/*\\n*/ #define A\\nMARK\\n` ends with
  equal counters and no directive.
- A file that is included and ends inside an invocation, or with a function-like macro's name. `F(1` at the end of it:
  the line directive for the includer is due in the middle of the line that is being written.
- A last line that ends in a backslash without a line end. `MARK \\\\`: the line end that is supplied makes a
  continuation of the backslash for whoever reads the output.
- Line ends that are a single CR: continuations in text lines, which are written as they are, and quotes without their
  partner, since a literal may hold a CR. `a \\\\\\rMARK\\r` is one line for a reader who counts LF.
- What follows a malformed `#line` with a number. `/*\\n*/\\n#line 1 oops\\nMARK\\n`: the number holds, but no directive
  tells of it.
"""

import posixpath
import random

# Stands for a mark among the pieces of a text that is put into a file.
MARK_HERE = object()
# Stands for a mark that must not reach the output: one in a comment.
LOST_MARK = object()
# In the expected text of a whole line: the name of the file in quotes, as __FILE__ gives it.
FILE_NAME = "\0"


class MarkEvent:
    """A mark that is kept. `whole_line` is the exact output line that it stands on, where that is known."""

    def __init__(self, mark, line):
        self.mark = mark
        self.line = line
        self.whole_line = None


class RenameEvent:
    def __init__(self, name):
        self.name = name


class IncludeEvent:
    def __init__(self, operand, is_quoted):
        self.operand = operand
        self.is_quoted = is_quoted


class ExpectedMark:
    def __init__(self, mark, name, line, whole_line):
        self.mark = mark
        self.name = name
        self.line = line
        self.whole_line = whole_line


class FileWriter:
    """Writes one file, knowing its line numbers, whether the place is kept, and what it is to bring about."""

    BARE_WORDS = ["alpha", "beta;", "+", "( x", "y )", "{", "}", "0x1F", "1.5e3", "->", "==", "line", "error", "if",
                  "else", "include", "defined", "ident", "%", "\\", "@", "x.y", "a[1]", "...", "\x80\xff", "::", "=",
                  "/"]
    LITERALS = ['"text"', '"// no comment"', "'/*'", '"a \\" b"', "'\\n'", "L'x'"]
    # Quotes without a partner, the closing one of a text with an escape that no string may hold among them. They pair
    # with any other quote of their line, so they keep away from literals and comments.
    UNPAIRED = ["it's", 'say "so', "5'", '"tab\\t"']

    def __init__(self, project, path, is_main):
        self.project = project
        self.chance = project.chance
        self.path = path
        self.is_main = is_main
        self.line_end = self.pick("\n", "\n", "\n", "\r\n", "\r\n", "mixed", "\r")
        self.parts = []
        self.line = 1
        self.active = True
        self.events = []
        self.is_guarded = False

    # ------------------------------------------------------------------ writing

    def pick(self, *choices):
        return self.chance.choice(choices)

    def maybe(self, probability):
        return self.chance.random() < probability

    def put(self, *pieces):
        for piece in pieces:
            if piece is MARK_HERE:
                mark = self.project.new_mark()
                if self.active:
                    self.events.append(MarkEvent(mark, self.line))
                piece = mark
            elif piece is LOST_MARK:
                piece = self.project.new_mark()
            self.parts.append(piece)
            self.line += piece.count("\n")

    def bytes(self):
        text = "".join(self.parts)
        if self.line_end == "mixed":
            text = "".join(self.pick("\n", "\r\n") if each == "\n" else each for each in text)
        else:
            text = text.replace("\n", self.line_end)
        return text.encode("latin-1")

    @property
    def ends_lines_with_cr(self):
        return self.line_end == "\r"

    # ------------------------------------------------------------------ pieces of lines

    def words(self, at_least=0, vocabulary=BARE_WORDS + LITERALS):
        """Words that are no macros and open no comment, with a blank on either side."""
        chosen = self.chance.choices(vocabulary, k=self.chance.randint(at_least, 4))
        return self.blank() + "".join(word + self.blank() for word in chosen)

    def blank(self):
        return self.pick(" ", " ", " ", "  ", "\t", "\f ", "\v")

    def line_comment(self):
        # A continuation does not continue a line comment: the next line is text again.
        return [self.pick("// ", "//"), LOST_MARK, self.pick("", " why", " /* no", ' "', " it's", " \\")]

    def short_comment(self):
        return self.pick("/* c */", "/**/", "/***/", "/*/ */", "/* \" */", "/* // */", "/* ' */")

    def long_comment(self):
        pieces = [self.pick("/*", "/**", "/* it's \"")]
        for _ in range(self.pick(1, 1, 2, 5)):
            pieces += [" text", "\n", self.pick("", " * ", "#if 0 ", "\\", "**", "// ", "#endif "), LOST_MARK]
        return pieces + [self.pick("*/", " */", "\n*/", "\n **/", "/*/")]

    def any_comment(self):
        return self.long_comment() if self.maybe(0.5) else [self.short_comment()]

    def tail(self):
        """What may stand behind the operand of a directive, its line end included."""
        return self.pick(["\n"], ["\n"], ["\n"], [" \n"], [" ", *self.line_comment(), "\n"],
                         [" ", self.short_comment(), "\n"], [" ", *self.long_comment(), "\n"], [" \\\n", "\n"],
                         [" \\\n", " ", *self.long_comment(), " \n"])

    def directive(self, word):
        """The "#" and the name of a directive, with what may stand before and between."""
        before = self.pick([], [], [], [], ["  "], ["\t"], [self.short_comment()], self.long_comment(), [" \\\n"],
                           [*self.long_comment(), "\\\n"])
        between = self.pick([], [], [], [], [" "], ["  "], [self.short_comment()], self.long_comment(), ["\\\n"])
        return [*before, "#", *between, word]

    # ------------------------------------------------------------------ shapes of text

    def plain_line(self):
        """No comment, no macro: the line comes out exactly as it stands."""
        vocabulary = self.BARE_WORDS + self.LITERALS
        if self.maybe(0.3) and not self.ends_lines_with_cr:
            vocabulary = self.BARE_WORDS + self.UNPAIRED
        before, behind = self.pick("", "", "  ", "\t", "\f"), self.words(0, vocabulary)
        if self.maybe(0.5):
            before += self.words(1, vocabulary).lstrip()
        self.put(before, MARK_HERE, behind, "\n")
        if self.active:
            event = self.events[-1]
            event.whole_line = before + event.mark + behind

    def numbered_line(self):
        """What __LINE__ and __FILE__ say must be what the line directives say."""
        self.put(MARK_HERE, " __LINE__ __FILE__\n")
        if self.active:
            event = self.events[-1]
            event.whole_line = "%s %d %s" % (event.mark, event.line, FILE_NAME)

    def empty_line(self):
        self.put(*self.pick(["\n"], ["  \n"], ["\n\n\n"], [" ", self.short_comment(), " \n"],
                            [*self.line_comment(), "\n"]))

    def commented_line(self):
        self.put(*self.pick(["  "], [self.short_comment(), " "], self.long_comment() + [" "]))
        self.put(MARK_HERE, self.words())
        for _ in range(self.pick(1, 2, 3)):
            self.put(" ", *self.any_comment(), " ", MARK_HERE, " ")
        self.put(*self.pick([], self.line_comment(), self.any_comment()), "\n")

    def comment_alone(self):
        self.put(self.pick("", "  "), *self.long_comment(), self.pick("", " "), "\n")

    def line_comment_with_backslash(self):
        self.put(self.pick("", "x "), "// ", LOST_MARK, " \\\n", MARK_HERE, self.words(), "\n")

    def continued_line(self):
        if self.ends_lines_with_cr:
            return self.plain_line()
        self.put(MARK_HERE)
        for _ in range(self.pick(1, 2, 3)):
            self.put(self.words(), self.pick("\\\n", "\\\n", "\\\n  \\\n"), self.words(), MARK_HERE, " ")
            if self.maybe(0.3):
                self.put(*self.any_comment(), " ", MARK_HERE)
        self.put("\n")

    # ------------------------------------------------------------------ shapes of macros

    def argument(self):
        """One argument, perhaps over several lines. What looks like a directive there is text of the argument. In a
        skipped group, such as a guarded header is at its second inclusion, nothing is an argument."""
        directive = "#endif" if self.active and not self.is_guarded else "#define"
        return self.pick(["1"], ["(2, 3)"], ["1\n"], ["\n1"], [*self.long_comment(), "1"], ["f(4,\n5)"], ["OBJ"],
                         ["1\n#define OTHER 2\n"], ["(\n", directive, "\n)"], ["1 ", *self.line_comment(), "\n"],
                         ['")"'], ["\\\n 1"])

    def invocation_in_one_line(self):
        invocation = self.pick("f(1, 2)", "g(f(1, 2))", "OBJ", "EMPTY", "NAME(1, 2)", "nil()", "f (1,2)",
                               "f(nil(),OBJ)")
        self.put(MARK_HERE, " ", invocation, " ", MARK_HERE, self.words(), "\n")

    def invocation_over_lines(self):
        name = self.pick("f", "NAME", "f", "FULL")
        self.put(self.pick("", "  "), MARK_HERE, " ", name)
        self.put(*self.pick([], [" "], ["\n"], [*self.long_comment()], ["\n\n"], [" ", *self.line_comment(), "\n"]))
        self.put("(", *self.argument(), ",", *self.argument(), ")", self.words(), "\n")

    def wrong_invocation(self):
        """An error of the input, not of the lines. "f(1, 2, 3, 4)" leaves " 4)" as text."""
        self.put(MARK_HERE, " ")
        self.put(*self.pick(["f(1)"], ["f(\n1\n)"], ["f(1,2,3)"], ["f(1,\n2,3,\n4)"], ["nil(\n1)"], ["g()"],
                            ["BEGIN(1)"], ["FINISH(\n1)"]))
        self.put(self.words(), "\n")

    def name_without_arguments(self):
        self.put(MARK_HERE, " f")
        if self.maybe(0.5):
            self.put(self.pick(" ;", ";"), MARK_HERE, "\n")
            return
        # The line ends are written before the name, so the words behind the semicolon are in their own line.
        self.put(*self.pick(["\n"], ["\n\n"], [" ", *self.long_comment(), "\n"], ["\n", *self.long_comment()]))
        self.put("; ", MARK_HERE, self.words(), "\n")

    # ------------------------------------------------------------------ shapes of directives

    def definition(self):
        self.put(*self.directive("define"), self.pick(" ", "\t", " \\\n "))
        self.put(*self.pick(
            ["QUIET 1"], ["QUIET a \\\n b"], ["QUIET ", *self.long_comment(), " 1"], ["quiet(a,\nb) a"],
            ["quiet( \\\n a \\\n) #a \\\n + a"], ["quiet(a, 1) a"], ["quiet(a +"], ["QUIET ", LOST_MARK]))
        self.put(*self.tail())

    def removal(self):
        self.put(*self.directive("undef"), " QUIET", *self.tail())

    def leftover_of_definition(self):
        """What a bad name or a second name leaves of the line is a line of its own."""
        self.put(*self.directive(""))
        self.put(*self.pick(["undef QUIET quiet ", MARK_HERE], ["define 1 ", MARK_HERE], ["undef 5 ", MARK_HERE],
                            ["define #undef QUIET"], ["define"], ["undef"]))
        self.put("\n")

    def null_directive(self):
        """In a skipped group it takes the line behind it along, so that line must be a harmless one."""
        self.put(*self.directive(""), *self.pick([], [" "], [" ", *self.any_comment()], [" ", *self.line_comment()]),
                 "\n")
        self.plain_line()

    def dropped_directive(self):
        self.put(*self.directive(self.pick("warning", "ident", "foo", "1", "error", '"x"')), " ", LOST_MARK)
        if self.maybe(0.2) and not self.ends_lines_with_cr:
            self.put(" ", self.pick(*self.UNPAIRED), "\n")
        else:
            self.put(*self.pick([], [" \\\n ", LOST_MARK], [" ", *self.long_comment()]), *self.tail())

    def pragma(self):
        self.put(*self.directive("pragma"), *self.pick([" once"], [" pack(push, 1)"], [""], [" a \\\n b"],
                                                       [" OBJ ", *self.long_comment(), " f(1)"]), "\n")

    def pragma_operator(self):
        """What stands between it and the next line with a mark writes no line ends of its own accord."""
        self.put(*self.pick([MARK_HERE, " "], ["  "], []))
        self.put(*self.pick(['_Pragma("once")'], ['_Pragma ( "a \\"b\\"" )'], ['_Pragma\n(\n"once"\n)'],
                            ['_Pragma("a") _Pragma("b")']), "\n")
        for _ in range(self.pick(0, 1, 2, 3, 4)):
            self.put(self.pick("\n", "#define QUIET 1\n", "#undef QUIET\n", "#\n\n", "#if 0\nx\n#endif\n", "#foo\n",
                               "#pragma x\n"))
        self.plain_line()

    def new_line_number(self):
        number = self.pick(1, 2, 3, self.line, self.chance.randint(1, 99999), 2000000000)
        name = self.pick(None, None, "gen.y", "sub/gen.y", "a b.y", "we\\\\ird.y", "no/such.y")
        self.put(*self.directive("line"), " ", str(number))
        if name:
            self.put(self.pick(" ", "  ", " \\\n "), '"%s"' % name)
        self.put(self.pick("", " ", " // why", " /* why */"), "\n")
        if self.active:
            self.line = number + 1
            if name:
                self.events.append(RenameEvent(name))

    def include(self):
        target = self.chance.choice(self.project.headers) if self.project.headers else "none.h"
        operand = self.pick(target, target, posixpath.basename(target), "../" + target, "none.h")
        is_quoted = self.maybe(0.6)
        written = '"%s"' % operand if is_quoted else "<%s>" % operand
        if self.maybe(0.15):
            self.put(*self.directive("define"), " HEADER ", written, "\n")
            written = "HEADER"
        self.put(*self.directive("include"), self.pick(" ", "", " /* h */ ") if written != "HEADER" else " ", written,
                 self.pick("", "", "", " extra"), *self.tail())
        if self.active:
            self.events.append(IncludeEvent(operand, is_quoted))

    OPENINGS = [("if", " 1", True), ("if", " 0", False), ("ifdef", " YES", True), ("ifdef", " NO", False),
                ("ifndef", " NO", True), ("ifndef", " YES", False), ("if", " YES > 1 && !defined(NO)", True),
                ("if", " defined YES && 0", False), ("if", "(NO)", False), ("if", " 'a' \\\n == 97", True),
                ("if", " 1 +", False), ("if", " oops(1)", False)]

    def conditional(self, depth):
        outside = self.active
        word, condition, is_true = self.chance.choice(self.OPENINGS)
        self.put(*self.directive(word), condition)
        self.active = outside and is_true
        if word != "if" and self.maybe(0.15):
            # What is left of such a line is the first line of the group.
            self.put(" ", MARK_HERE, self.words(), "\n")
        else:
            self.put(*self.tail())
        was_taken = is_true
        self.body(depth + 1, self.pick(0, 1, 2, 4))
        for _ in range(self.pick(0, 0, 0, 1, 2)):
            is_true = self.maybe(0.5)
            self.put(*self.directive("elif"), " 1" if is_true else " 0", *self.tail())
            self.active = outside and is_true and not was_taken
            was_taken = was_taken or is_true
            self.body(depth + 1, self.pick(0, 1, 2))
        if self.maybe(0.5):
            self.put(*self.directive("else"))
            self.active = outside and not was_taken
            self.rest_of_line()
            self.body(depth + 1, self.pick(0, 1, 2, 4))
        self.put(*self.directive("endif"))
        self.active = outside
        self.rest_of_line()

    def rest_of_line(self):
        """What stands behind #else and #endif is a line of its own, and text if the group is kept."""
        self.put(*self.pick(["\n"], ["\n"], [" ", *self.line_comment(), "\n"], [" ", *self.any_comment(), "\n"],
                            [" \\\n\n"], [" ", MARK_HERE, self.words(), "\n"],
                            [" ", *self.any_comment(), " ", MARK_HERE, "\n"]))

    # ------------------------------------------------------------------ the whole file

    SHAPES = [(8, plain_line), (2, numbered_line), (3, empty_line), (3, commented_line), (3, comment_alone),
              (1, line_comment_with_backslash), (3, continued_line), (2, invocation_in_one_line),
              (4, invocation_over_lines), (1, wrong_invocation), (2, name_without_arguments), (3, definition),
              (1, removal), (1, leftover_of_definition), (2, null_directive), (2, dropped_directive), (2, pragma),
              (2, pragma_operator), (2, new_line_number), (4, include), (5, conditional)]

    def body(self, depth, count):
        weights = [weight for weight, _ in self.SHAPES]
        for _, shape in self.chance.choices(self.SHAPES, weights, k=count):
            if self.active:
                self.project.count_shape(shape)
            if shape is FileWriter.conditional:
                if depth < 4:
                    self.conditional(depth)
            else:
                shape(self)

    def definitions(self):
        """The macros that the shapes use."""
        lines = ["#define f(a, b) a b\n", "#define g(a) <a>\n", "#define nil() 0\n", "#define EMPTY\n",
                 "#define OBJ 1 2\n", "#define NAME f\n", "#define FULL(a, b) f(b, a) f(#a, a ## b)\n",
                 "#define BEGIN(a) ## a\n", "#define FINISH(a) a ##\n"]
        self.chance.shuffle(lines)
        self.put(*lines)

    def ending(self):
        """The last line, which need not have a line end."""
        choice = self.chance.randint(0, 13)
        if choice == 0:
            self.put(MARK_HERE, self.words().rstrip(" \\"))
        elif choice == 1:
            self.put("#define QUIET 1")
        elif choice == 2:
            self.put("#if 1\n", MARK_HERE, "\n#endif")
        elif choice == 3:
            # The rest of the file is skipped, and its conditional is still open.
            self.put("#if 0\n", LOST_MARK, "\n#if 1\n", LOST_MARK)
        elif choice == 4:
            self.put("#ifdef YES\n", MARK_HERE, self.pick("", "\n"))
        elif choice == 5:
            self.put(MARK_HERE, " // ", LOST_MARK)
        elif choice == 6:
            self.put(MARK_HERE, " ", *self.long_comment())
        elif choice == 7:
            self.put(MARK_HERE, " /* never closed\n ", LOST_MARK, self.pick("", "\n", "*", "\n#endif\n"))
        elif choice == 8 and not self.ends_lines_with_cr:
            self.put(MARK_HERE, " \\\n")
        elif choice == 9:
            self.put("#")
        elif choice == 10:
            self.put(self.pick("   ", "\t", "\n\n", "#else", "#endif", "#line 7", "#foo", "#error e"))
        elif choice == 11 and self.project.headers:
            operand = self.chance.choice(self.project.headers)
            self.put('#include <%s>' % operand)
            self.events.append(IncludeEvent(operand, False))
        elif choice == 12 and self.is_main:
            self.put(MARK_HERE, self.pick(" f(1,\n2", " f", " f\n", " f(\n"))
        else:
            self.put(MARK_HERE, "\n")

    def write(self):
        if self.is_main:
            self.definitions()
        elif self.maybe(0.5):
            self.is_guarded = True
            self.put("#ifndef GUARD_%d\n#define GUARD_%d\n" % (id_of(self.path), id_of(self.path)))
        self.body(0, self.pick(1, 3, 6, 10, 15))
        if self.is_guarded:
            self.put("#endif\n")
        elif self.maybe(0.9):
            self.ending()


def id_of(path):
    """The number of a header: the one in its name."""
    return int("".join(filter(str.isdigit, path)))


class Project:
    """Files, a command line, and the marks that the output must hold."""

    FOLDERS = ["", "sub/", "sub/deep/", "inc/"]

    def __init__(self, chance, shape_counts):
        self.chance = chance
        self.mark_count = 0
        self.headers = []
        self.writers = {}
        self.shape_counts = shape_counts
        for number in range(chance.choice([0, 1, 2, 3, 5])):
            path = "%sh%d.h" % (chance.choice(self.FOLDERS), number)
            self.write_file(path, False)
            # A header includes only those that were there before it, so that none includes itself.
            self.headers.append(path)
        self.main_path = chance.choice(["main.c", "main.c", "main.c", "sub/main.c", None])
        self.main = self.write_file(self.main_path, True)
        self.files = {path: writer.bytes() for path, writer in self.writers.items() if path}
        self.stdin = b"" if self.main_path else self.main.bytes()
        self.include_folders = chance.sample([".", "inc", "sub", "none"], 4)
        self.words = ["-I" + folder for folder in self.include_folders] + ["-DYES=2"]
        self.main_name = self.main_path or "stdin"
        if chance.random() < 0.2:
            self.main_name = chance.choice(["shown.c", "sub/shown.c", "we\\ird.c", "a b.c"])
            self.words += ["-s", self.main_name]
        if self.main_path:
            self.words.append(self.main_path)

    def write_file(self, path, is_main):
        writer = FileWriter(self, path, is_main)
        self.writers[path] = writer
        writer.write()
        return writer

    def new_mark(self):
        self.mark_count += 1
        return "MARK_%d" % self.mark_count

    def count_shape(self, shape):
        self.shape_counts[shape.__name__] = self.shape_counts.get(shape.__name__, 0) + 1

    # ------------------------------------------------------------------ what the output must hold

    def expected_marks(self):
        self.seen_guards = set()
        return self.marks_of(self.main, self.main_name)

    def marks_of(self, writer, name):
        if writer.is_guarded and writer.path in self.seen_guards:
            return []
        self.seen_guards.add(writer.path)
        marks = []
        for event in writer.events:
            if isinstance(event, MarkEvent):
                whole_line = event.whole_line
                if whole_line is not None:
                    whole_line = whole_line.replace(FILE_NAME, '"%s"' % name).encode("latin-1")
                marks.append(ExpectedMark(event.mark.encode(), name.encode(), event.line, whole_line))
            elif isinstance(event, RenameEvent):
                name = event.name
            else:
                found = self.find(event, name)
                if found:
                    marks += self.marks_of(self.writers[posixpath.normpath(found)], found)
        return marks

    def find(self, event, includer):
        """The name under which an include finds its file: next to the includer for the quoted form, then in the
        folders of the command line. "" if there is no such file."""
        folder = folder_of(includer)
        candidates = ["%s/%s" % (folder, event.operand) if folder != "." else event.operand] if event.is_quoted else []
        candidates += ["%s/%s" % (each, event.operand) for each in self.include_folders]
        return next((each for each in candidates if self.has_file(each)), "")

    def has_file(self, path):
        """As the file system sees it: "none/../h1.h" is no file, since there is no folder "none"."""
        existing = {""} | {folder.rstrip("/") for folder in self.FOLDERS}
        step = ""
        for part in path.split("/")[:-1]:
            step = posixpath.normpath(posixpath.join(step, part))
            if (step if step != "." else "") not in existing:
                return False
        return posixpath.normpath(path) in self.files and posixpath.normpath(path) != self.main_path


def folder_of(name):
    """The part of a name before its last separator, which may be a backslash too."""
    last = max(name.rfind("/"), name.rfind("\\"))
    return name[:last] if last > 0 else "."


def project_of(seed, number, shape_counts):
    return Project(random.Random("%d:%d" % (seed, number)), shape_counts)


def differences(expected, found):
    """What is wrong with the marks of an output, in words; nothing if every mark is where it belongs."""
    problems = []
    for wanted, actual in zip(expected, found):
        if wanted.mark != actual.mark:
            problems.append("output line %d holds %s where %s is due" % (
                actual.number, actual.mark.decode(), wanted.mark.decode()))
            break
        place = actual.place
        if place is None or (place.name, place.line) != (wanted.name, wanted.line):
            problems.append("%s belongs to %s:%d, but output line %d stands for %s" % (
                wanted.mark.decode(), wanted.name.decode(), wanted.line, actual.number, place))
        elif wanted.whole_line is not None and wanted.whole_line != actual.text:
            problems.append("output line %d should read %r, but reads %r" % (
                actual.number, wanted.whole_line, actual.text))
    if not problems and len(expected) != len(found):
        problems.append("%d marks are due, but the output holds %d" % (len(expected), len(found)))
    return problems
