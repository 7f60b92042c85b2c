# Makes the page for man(1) from the manual in Markdown. It knows what the manual uses, and stops at anything else:
#
#   # title                  left out; name, date and version of the page come from the variables below
#   ## SECTION, ### Part     headings
#   - tag\                   a tagged paragraph: the tag, a backslash, and the text indented by two blanks
#   - item                   a list item, its further lines indented by two blanks
#   ```language ... ```      lines as they are
#   | a | b |                a table with a heading, a line of dashes and rows; <br> ends a line of a cell. Before it must
#                            stand <!-- widths: 20 30 --> with the widths of the columns
#   <!-- ... -->             a comment, on lines of its own
#   `literal` **bold** *italic*, and a backslash before a character that is meant as it is; each on one line
#
# Usage: awk -v name=QNPP -v section=1 -v date=YYYY-MM-DD -v version="qnpp 1.0.0" -v copyright="..." \
#            -f MarkdownToMan.awk manual.md
#
# Any POSIX awk runs it.

function fail(what) {
  printf "%s:%d: %s\n", FILENAME, FNR, what >"/dev/stderr"
  failed = 1
  exit 1
}

# One character for the formatter, so that it shows as itself even where it would mean something, or be beautified.
function escapeCharacter(c) {
  if (c == "\\") return "\\e"
  if (c == "'") return "\\(aq"
  if (c == "`") return "\\(ga"
  if (c == "^") return "\\(ha"
  if (c == "~") return "\\(ti"
  if (c == "-") return "\\-"
  return c
}

function escapeText(text, keepBlanks,    i, c, result) {
  result = ""
  for (i = 1; i <= length(text); i++) {
    c = substr(text, i, 1)
    result = result (c == " " && keepBlanks ? "\\ " : escapeCharacter(c))
  }
  return result
}

# A piece of text with its emphasis. With `keepBlanks` no line is broken inside a literal.
function inline(text, keepBlanks,    result, i, c, end) {
  result = ""
  i = 1
  while (i <= length(text)) {
    c = substr(text, i, 1)
    if (c == "`") {
      end = index(substr(text, i + 1), "`")
      if (end == 0) fail("a literal does not end on its line")
      result = result "\\fB" escapeText(substr(text, i + 1, end - 1), keepBlanks) "\\fR"
      i += end + 1
    } else if (substr(text, i, 2) == "**") {
      end = index(substr(text, i + 2), "**")
      if (end == 0) fail("bold text does not end on its line")
      result = result "\\fB" inline(substr(text, i + 2, end - 1), keepBlanks) "\\fR"
      i += end + 3
    } else if (c == "*") {
      end = index(substr(text, i + 1), "*")
      if (end == 0) fail("italic text does not end on its line")
      result = result "\\fI" inline(substr(text, i + 1, end - 1), keepBlanks) "\\fR"
      i += end + 1
    } else if (c == "\\") {
      result = result escapeCharacter(substr(text, i + 1, 1))
      i += 2
    } else {
      # A plain hyphen is a hyphen; everything else shows as it is.
      result = result (c == "-" ? c : escapeCharacter(c))
      i++
    }
  }
  return result
}

# A line of output that is text, not a request.
function put(line) {
  if (line ~ /^[.']/) line = "\\&" line
  print line
}

# The cells of a row; "\|" in the text is no border.
function row(line, isHeading,    cells, count, i, text) {
  gsub(/\\\|/, "\001", line)
  sub(/^\| */, "", line)
  sub(/ *\|$/, "", line)
  count = split(line, cells, / +\| +/)
  if (count != columns) fail("a row of " count " cells in a table of " columns " columns")
  for (i = 1; i <= count; i++) {
    text = cells[i]
    gsub("\001", "|", text)
    if (isHeading) text = "**" text "**"
    print "T{"
    cell(text)
    printf "T}%s", (i < count ? "\t" : "\n")
  }
}

function heading(request, text) {
  printf "%s \"%s\"\n", request, escapeText(text, 0)
  inParagraph = 0
  isBelowHeading = 1
}

# There is an empty line before a paragraph, but not right below a heading.
function beginParagraph(request) {
  if (request != ".PP" || !isBelowHeading) print request
  inParagraph = 1
  isBelowHeading = 0
}

function cell(text,    lines, count, i) {
  count = split(text, lines, "<br>")
  for (i = 1; i <= count; i++) {
    if (i > 1) print ".br"
    put(inline(lines[i], 1))
  }
}

function beginTable(    widthList, i, format) {
  if (widths == "") fail("no widths for this table")
  columns = split(widths, widthList, " ")
  format = ""
  for (i = 1; i <= columns; i++) format = format (i > 1 ? " " : "") "lw(" widthList[i] "n)"
  print ".TS"
  print format "."
  widths = ""
  inTable = 1
  rows = 0
}

function endTable() {
  print ".TE"
  inTable = 0
}

BEGIN {
  print "'\\\" t"
  print ".\\\" Made from the manual in Markdown by cmake/MarkdownToMan.awk."
  printf ".TH \"%s\" \"%s\" \"%s\" \"%s\" \"User Commands\"\n", name, section, date, version
  # Left-justified and without hyphenation: words of programs stay recognisable.
  print ".nh"
  print ".ad l"
}

inCode && /^```$/ {
  print ".fi"
  print ".RE"
  inCode = 0
  next
}
inCode {
  put(escapeText($0, 0))
  next
}

inComment {
  if (/-->$/) inComment = 0
  next
}
/^<!-- widths:/ {
  widths = $0
  gsub(/^<!-- widths: *| *-->$/, "", widths)
  next
}
/^<!--/ {
  if (!/-->$/) inComment = 1
  next
}

inTable && !/^\|/ { endTable() }

/^# / { next }
/^## / {
  heading(".SH", substr($0, 4))
  next
}
/^### / {
  heading(".SS", substr($0, 5))
  next
}
/^#/ { fail("a heading of an unknown kind") }

/^```/ {
  beginParagraph(".PP")
  inParagraph = 0
  print ".RS 4"
  print ".nf"
  inCode = 1
  next
}

/^\|[-|]+\|$/ {
  if (!inTable || rows != 1) fail("a line of dashes that is not below the heading of a table")
  print "_"
  next
}
/^\|/ {
  inParagraph = isBelowHeading = 0
  if (!inTable) beginTable()
  else if (rows > 1) print ".sp 1"
  row($0, rows == 0)
  rows++
  next
}

/^- .*\\$/ {
  beginParagraph(".TP")
  put(inline(substr($0, 3, length($0) - 3), 0))
  next
}
/^- / {
  beginParagraph(".IP \\(bu 2")
  put(inline(substr($0, 3), 0))
  next
}
/^  +[^ ]/ && inParagraph {
  sub(/^ +/, "")
  put(inline($0, 0))
  next
}
/^ / { fail("an indented line that continues nothing") }

/^$/ {
  inParagraph = 0
  next
}

{
  if (!inParagraph) beginParagraph(".PP")
  put(inline($0, 0))
}

END {
  if (failed) exit 1
  if (inCode || inComment) fail("something is still open at the end")
  if (inTable) endTable()
  print ".SH COPYRIGHT"
  put(inline(copyright, 0))
}
