# Read by cpack. Without dpkg-shlibdeps, cpack silently makes packages without dependencies; newer
# cpack also needs `file` to find the binaries. Archives have no dependencies.
if(NOT CPACK_GENERATOR STREQUAL "DEB")
  return()
endif()
foreach(tool dpkg-shlibdeps file)
  find_program(found_${tool} ${tool})
  if(NOT found_${tool})
    message(FATAL_ERROR "${tool} is missing, without which the packages would have no dependencies: "
                        "sudo apt install dpkg-dev file")
  endif()
endforeach()
