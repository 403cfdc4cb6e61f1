cmake_minimum_required(VERSION 3.25)
# cmake -DSOURCE_DIR=... -DLAYERS=<build>/layers.txt -P check_includes.cmake
#
# The include check of the layers: every project header a library's file
# includes must belong to that library or to one the layer table
# (CMakeLists.txt, written out as layers.txt) lets it use. A header belongs
# to the layer whose folder is the longest prefix of its path
# (data/drivers/x.h to drivers, data/x.h to data). Includes that name no
# layer folder (system headers, the generated "orvalis/version.h", a file
# beside the includer) are not judged. Prints every upward include and
# fails when there is one.
file(STRINGS "${LAYERS}" rows)
set(names)
foreach(row IN LISTS rows)
  string(REGEX REPLACE " +" ";" parts "${row}")
  list(GET parts 0 name)
  list(GET parts 1 dir)
  list(GET parts 2 deps)
  string(REPLACE "," ";" deps "${deps}")
  list(APPEND names ${name})
  set(dir_${name} "${dir}")
  set(deps_${name} ${deps} ${name})
endforeach()
# The command-line tool stands above every layer; the test support folders
# are nobody's to include from the library.
list(APPEND names cli)
set(dir_cli "cli")

# The layer of a path relative to the source folder, or "" for none.
function(layer_of path out)
  set(best "")
  set(best_length 0)
  foreach(name IN LISTS names)
    string(LENGTH "${dir_${name}}/" length)
    string(SUBSTRING "${path}" 0 ${length} head)
    if(head STREQUAL "${dir_${name}}/" AND length GREATER best_length)
      set(best ${name})
      set(best_length ${length})
    endif()
  endforeach()
  set(${out} "${best}" PARENT_SCOPE)
endfunction()

set(violations 0)
foreach(name IN LISTS names)
  if(name STREQUAL "cli")
    continue()
  endif()
  file(GLOB_RECURSE files RELATIVE "${SOURCE_DIR}" "${SOURCE_DIR}/${dir_${name}}/*.h" "${SOURCE_DIR}/${dir_${name}}/*.cc")
  foreach(file IN LISTS files)
    layer_of("${file}" owner)
    if(NOT owner STREQUAL name)
      continue()  # a deeper folder's file, judged as its own layer
    endif()
    file(STRINGS "${SOURCE_DIR}/${file}" includes REGEX "^[ \t]*#[ \t]*include[ \t]*\"")
    foreach(line IN LISTS includes)
      string(REGEX REPLACE "^[ \t]*#[ \t]*include[ \t]*\"([^\"]*)\".*" "\\1" header "${line}")
      layer_of("${header}" target)
      if(target STREQUAL "" OR target IN_LIST deps_${name})
        continue()
      endif()
      message("${file}: includes ${header} (layer ${name} may not use ${target})")
      math(EXPR violations "${violations} + 1")
    endforeach()
  endforeach()
endforeach()
if(violations GREATER 0)
  message(FATAL_ERROR "${violations} include(s) go upward")
endif()
message("every include follows the layers")
