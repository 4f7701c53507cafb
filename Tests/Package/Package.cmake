# Installs the build, moves the installation, and builds and runs the README's first C program
# against it: with find_package(), then with pkg-config.

set(here ${BUILD}/Tests/Package/package)
file(REMOVE_RECURSE ${here})
file(MAKE_DIRECTORY ${here})
set(prefix ${here}/moved)
set(lib ${prefix}/${LIBDIR})

function(run)
  execute_process(COMMAND ${ARGV} WORKING_DIRECTORY ${here} COMMAND_ECHO STDOUT
    RESULT_VARIABLE result)
  if(NOT result EQUAL 0)
    message(FATAL_ERROR "failed (${result}): ${ARGV}")
  endif()
endfunction()

# Runs the program; what it prints is what the README says.
function(run_program path)
  execute_process(COMMAND ${path} WORKING_DIRECTORY ${here} COMMAND_ERROR_IS_FATAL ANY
    OUTPUT_VARIABLE printed OUTPUT_STRIP_TRAILING_WHITESPACE)
  string(FIND "${readme}" "`${printed}`" place)
  if(printed STREQUAL "" OR place EQUAL -1)
    message(FATAL_ERROR "the program prints \"${printed}\", which the README doesn't say")
  endif()
endfunction()

file(READ ${README} readme)
string(FIND "${readme}" "\n```c\n" start)
if(start EQUAL -1)
  message(FATAL_ERROR "${README} has no C program (a block that begins with ```c)")
endif()
math(EXPR start "${start} + 6")
string(SUBSTRING "${readme}" ${start} -1 program)
string(FIND "${program}" "\n```" end)
string(SUBSTRING "${program}" 0 ${end} program)
file(WRITE ${here}/program.c "${program}\n")

run(${CMAKE_COMMAND} --install ${BUILD} --config ${CONFIG} --prefix ${here}/installed)
file(RENAME ${here}/installed ${prefix})

run(${CMAKE_COMMAND} -S ${CMAKE_CURRENT_LIST_DIR}/Consumer -B consumer -G ${GENERATOR}
  -D CMAKE_C_COMPILER=${CC} -D CMAKE_PREFIX_PATH=${prefix} -D PROGRAM=${here}/program.c)
run(${CMAKE_COMMAND} --build consumer)
run_program(${here}/consumer/program)

set(ENV{PKG_CONFIG_PATH} ${lib}/pkgconfig)
execute_process(COMMAND ${PKG_CONFIG} --cflags --libs qveffects
  OUTPUT_VARIABLE flags OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)
separate_arguments(flags UNIX_COMMAND "${flags}")
run(${CC} -std=c11 -Wall -Wextra -Werror program.c -o program ${flags} -Wl,-rpath,${lib})
run_program(${here}/program)
