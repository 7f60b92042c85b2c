" Messages of qnpp in the quickfix list:
"
"   :compiler qnpp
"   :make -o table.c table.c.in

if exists('current_compiler')
  finish
endif
let current_compiler = 'qnpp'

CompilerSet makeprg=qnpp
CompilerSet errorformat=
      \%f:%l:\ %tarning:\ %m.,
      \%f:%l:\ FATAL\ %trror:\ %m.,
      \%f:%l:\ %m.,
      \FATAL\ %trror:\ %m.,
      \%l:\ %m.,
      \%+Einput\ in\ flex\ scanner\ failed,
      \qnpp:\ %m,
      \%-G\	%m
