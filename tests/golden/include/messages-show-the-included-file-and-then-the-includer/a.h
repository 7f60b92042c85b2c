#error one
