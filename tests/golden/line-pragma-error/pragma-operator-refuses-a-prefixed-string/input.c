_Pragma(L"p") y
