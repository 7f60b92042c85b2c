#pragma a/*
*/b
x
