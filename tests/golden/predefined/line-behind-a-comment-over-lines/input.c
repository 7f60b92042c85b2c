/*

*/ __LINE__ /*
*/ __LINE__
