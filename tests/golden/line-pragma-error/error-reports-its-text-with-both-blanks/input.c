#error stop here
x
