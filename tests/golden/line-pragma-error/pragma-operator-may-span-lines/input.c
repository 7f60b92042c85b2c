a _Pragma
(
"p" /* c */ \
)
b
