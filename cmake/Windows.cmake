# What MinGW-w64 wants, the compiler for Windows: GCC's with POSIX threads.

# For the manifest of the program.
enable_language(RC)

# Its headers declare localtime_r() and rand_s() only if asked to.
add_compile_definitions(_POSIX_C_SOURCE=200809L _CRT_RAND_S)

# The libraries of the compiler are no part of Windows.
add_link_options(-static)

# qnpp_finish_for_windows(<program> <exported symbols>): what the program tells the system about itself, and a list of
# the functions that can be looked up in it, made from the one for other linkers.
function(qnpp_finish_for_windows program symbols)
  file(STRINGS "${symbols}" names REGEX "^ ")
  list(TRANSFORM names REPLACE "[ ;]" "")
  list(JOIN names "\n" names)
  set(exports "${CMAKE_CURRENT_BINARY_DIR}/${program}.def")
  file(CONFIGURE OUTPUT "${exports}" CONTENT "EXPORTS\n@names@\n" @ONLY)
  target_sources(${program} PRIVATE driver/windows.rc)
  target_link_options(${program} PRIVATE "${exports}")
endfunction()
