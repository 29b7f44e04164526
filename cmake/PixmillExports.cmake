# The list of exported names is read from the public header: every line that
# starts with PIXMILL_API declares one. From it come the ELF version script
# (exactly these names global, everything else local) and the Windows .def
# file. A second name for one function is listed here as alias=target.
set(PIXMILL_EXPORT_ALIASES
  "gYUV422HPlanartoRGB888TopDown=gYUV422HPlanartoBGR888TopDown")

function(pixmill_exported_names header out_var)
  file(STRINGS ${header} lines REGEX "^PIXMILL_API ")
  set(names)
  foreach(line IN LISTS lines)
    if(line MATCHES "([A-Za-z_][A-Za-z0-9_]*)\\(")
      list(APPEND names ${CMAKE_MATCH_1})
    endif()
  endforeach()
  set(${out_var} ${names} PARENT_SCOPE)
endfunction()

function(pixmill_export_files header map_file def_file)
  pixmill_exported_names(${header} names)
  set(map "{\n  global:\n")
  set(def "EXPORTS\n")
  foreach(name IN LISTS names)
    string(APPEND map "    ${name};\n")
    set(entry "${name}")
    foreach(alias IN LISTS PIXMILL_EXPORT_ALIASES)
      if(alias MATCHES "^${name}=")
        set(entry "${alias}")
      endif()
    endforeach()
    string(APPEND def "  ${entry}\n")
  endforeach()
  string(APPEND map "  local:\n    *;\n};\n")
  file(CONFIGURE OUTPUT ${map_file} CONTENT "${map}")
  file(CONFIGURE OUTPUT ${def_file} CONTENT "${def}")
  set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${header})
endfunction()
