# Import libraries of undecorated __stdcall exports, made from declarations alone.

# The command line that makes `library` for `dll` from `definition`.
function(import_library_command variable definition dll library)
  set(${variable} ${CMAKE_DLLTOOL} -k -d ${definition} -D ${dll} -l ${library} PARENT_SCOPE)
endfunction()

# Adds the library target `name`, whose import declarations are those of the definition files. Arguments
# behind the name: pairs of a definition file and the DLL that supplies what it declares.
function(add_import_libraries name)
  add_library(${name} INTERFACE)
  while(ARGN)
    list(POP_FRONT ARGN definition dll)
    get_filename_component(stem ${definition} NAME_WE)
    set(library ${CMAKE_CURRENT_BINARY_DIR}/lib${stem}.dll.a)
    import_library_command(command ${definition} ${dll} ${library})
    add_custom_command(OUTPUT ${library} COMMAND ${command} DEPENDS ${definition} VERBATIM)
    add_custom_target(${name}_${stem} DEPENDS ${library})
    add_dependencies(${name} ${name}_${stem})
    target_link_libraries(${name} INTERFACE ${library})
  endwhile()
endfunction()
