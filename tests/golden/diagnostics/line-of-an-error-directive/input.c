#error e
x
