# Each layer of src/ is a target that sees the headers of the layers it
# links and no others. A layer's headers are not reached through src/ but
# through an include root of its own in the build tree, which links to the
# layer's folder (or, where one folder holds several layers, to its single
# headers). A target's sources and its users get the roots of what it links,
# so "#include "host/session.h"" in the engine fails to build instead of
# waiting for a review.
#
#   tarvoke_layer_headers(target PATH...)  PATHs relative to src/: folders or headers

set(TARVOKE_INCLUDE_ROOTS ${CMAKE_BINARY_DIR}/include)

function(tarvoke_layer_headers target)
  set(root ${TARVOKE_INCLUDE_ROOTS}/${target})
  foreach(path ${ARGN})
    get_filename_component(parent ${root}/${path} DIRECTORY)
    file(MAKE_DIRECTORY ${parent})
    file(CREATE_LINK ${PROJECT_SOURCE_DIR}/src/${path} ${root}/${path} SYMBOLIC)
  endforeach()
  get_target_property(type ${target} TYPE)
  if(type STREQUAL "INTERFACE_LIBRARY")
    target_include_directories(${target} INTERFACE ${root})
  else()
    target_include_directories(${target} PUBLIC ${root})
  endif()
endfunction()
