# Install -> configure -> build -> run the out-of-tree consumer; the scratch folder is removed afterwards.
function(run)
  execute_process(COMMAND ${ARGN} RESULT_VARIABLE rc OUTPUT_VARIABLE out ERROR_VARIABLE err)
  if(NOT rc EQUAL 0)
    file(REMOVE_RECURSE ${LUMEX_WORK_DIR})
    message(FATAL_ERROR "failed (${rc}): ${ARGN}\n${out}\n${err}")
  endif()
  set(last_output "${out}" PARENT_SCOPE)
endfunction()

file(REMOVE_RECURSE ${LUMEX_WORK_DIR})
set(prefix ${LUMEX_WORK_DIR}/prefix)
run(${CMAKE_COMMAND} --install ${LUMEX_BUILD_DIR} --prefix ${prefix})

set(configure ${CMAKE_COMMAND} -S ${LUMEX_APP_SOURCE} -B ${LUMEX_WORK_DIR}/build -G ${LUMEX_GENERATOR}
  -DCMAKE_PREFIX_PATH=${prefix} -DCMAKE_BUILD_TYPE=Release)
if(LUMEX_TOOLCHAIN)
  # Cross builds search packages only under the find root: the scratch prefix is one.
  list(APPEND configure -DCMAKE_TOOLCHAIN_FILE=${LUMEX_TOOLCHAIN} -DCMAKE_FIND_ROOT_PATH=${prefix})
endif()
run(${configure})
run(${CMAKE_COMMAND} --build ${LUMEX_WORK_DIR}/build)

if(LUMEX_RUNNER)
  # The application finds the DLL next to itself: the consumer's build copies it there.
  run(${LUMEX_RUNNER} exec ${LUMEX_WORK_DIR}/build/LumexConsumer.exe)
else()
  run(${LUMEX_WORK_DIR}/build/LumexConsumer)
endif()
message(STATUS "${last_output}")
if(NOT last_output MATCHES "consumer ok")
  message(FATAL_ERROR "the consumer did not report success")
endif()
file(REMOVE_RECURSE ${LUMEX_WORK_DIR})
