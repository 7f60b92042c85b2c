if defined
