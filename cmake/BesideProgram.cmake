# veltrako_copy_beside_program(TARGET file...): a target that copies data
# files from the current source folder into the folder of the executables,
# where the programs look for them, whenever a source file changes.
function(veltrako_copy_beside_program target)
  set(outputs)
  foreach(file IN LISTS ARGN)
    set(target_file ${CMAKE_RUNTIME_OUTPUT_DIRECTORY}/${file})
    add_custom_command(
      OUTPUT ${target_file}
      COMMAND ${CMAKE_COMMAND} -E copy_if_different ${CMAKE_CURRENT_SOURCE_DIR}/${file} ${target_file}
      DEPENDS ${CMAKE_CURRENT_SOURCE_DIR}/${file}
      COMMENT "Copying ${file}"
      VERBATIM)
    list(APPEND outputs ${target_file})
  endforeach()
  add_custom_target(${target} ALL DEPENDS ${outputs})
endfunction()
