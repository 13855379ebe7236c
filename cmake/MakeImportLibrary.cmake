# Makes a module's import library. Callers link to the decorated names of their width (`_Name@4` in 32 bits, `Name` in
# 64); the module is asked for the plain ones. The decorations are those of the functions in the linked module.
# Run with -DMODULE= -DDEFINITIONS= -DLIBRARY= -DNM= -DDLLTOOL=

function(run_tool output)
  execute_process(COMMAND ${ARGN} OUTPUT_VARIABLE text RESULT_VARIABLE result)
  if(result)
    message(FATAL_ERROR "${ARGN}: ${result}")
  endif()
  set(${output} "${text}" PARENT_SCOPE)
endfunction()

run_tool(symbols ${NM} ${MODULE})
file(STRINGS ${DEFINITIONS} lines)
set(text "")
set(inside FALSE)
foreach(line IN LISTS lines)
  string(STRIP "${line}" name)
  if(name STREQUAL EXPORTS)
    set(inside TRUE)
  elseif(inside AND name)
    if(symbols MATCHES " T _(${name}@[0-9]+)\n")
      set(name ${CMAKE_MATCH_1})
    elseif(NOT symbols MATCHES " T ${name}\n")
      message(FATAL_ERROR "${MODULE} has no function ${name}")
    endif()
  endif()
  string(APPEND text "${name}\n")
endforeach()

get_filename_component(folder ${LIBRARY} DIRECTORY)
file(MAKE_DIRECTORY ${folder})
file(WRITE ${LIBRARY}.def "${text}")
run_tool(ignored ${DLLTOOL} --kill-at --input-def ${LIBRARY}.def --output-lib ${LIBRARY})
