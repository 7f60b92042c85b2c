#foo
