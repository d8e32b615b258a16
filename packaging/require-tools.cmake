# Read by cpack. Without dpkg-shlibdeps it would make packages without dependencies; newer ones ask
# file what there is to look into. Archives have no dependencies anyway.
if(NOT CPACK_GENERATOR STREQUAL "DEB")
  return()
endif()
foreach(tool dpkg-shlibdeps file)
  find_program(found_${tool} ${tool})
  if(NOT found_${tool})
    message(FATAL_ERROR "${tool} is missing, without which packages would depend on nothing: "
                        "sudo apt install dpkg-dev file")
  endif()
endforeach()
