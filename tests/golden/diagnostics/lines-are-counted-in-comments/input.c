/*

*/
#foo
