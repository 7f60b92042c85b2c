a/* c */b/**/c //d
