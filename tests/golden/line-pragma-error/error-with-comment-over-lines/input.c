#error a/*
*/b
x
