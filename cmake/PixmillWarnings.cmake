# Warning flags for everything the project compiles itself.
add_library(pixmill_warnings INTERFACE)
if(MSVC)
  target_compile_options(pixmill_warnings INTERFACE /W4)
else()
  target_compile_options(pixmill_warnings INTERFACE
    -Wall -Wextra -Wpedantic -Wconversion -Wsign-conversion -Wshadow -Wcast-align
    -Wold-style-cast -Wnull-dereference -Wdouble-promotion)
endif()
