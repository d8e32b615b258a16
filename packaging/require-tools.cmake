# Read by cpack. Without dpkg-shlibdeps it would make packages without dependencies; newer ones ask
# file what there is to look into.
foreach(tool dpkg-shlibdeps file)
  find_program(found_${tool} ${tool})
  if(NOT found_${tool})
    message(FATAL_ERROR "${tool} is missing, without which packages would depend on nothing: "
                        "sudo apt install dpkg-dev file")
  endif()
endforeach()
