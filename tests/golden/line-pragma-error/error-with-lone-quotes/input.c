#error don't "panic
x
