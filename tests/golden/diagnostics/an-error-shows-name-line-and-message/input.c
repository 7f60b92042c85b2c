x

  #foo
