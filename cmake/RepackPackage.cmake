# Run by CPack on each package that it has made. CPack writes down the order in which the disk lists
# the files, the time at which each was made, and what the maker's umask has left of their modes;
# dpkg-deb sorts, and knows SOURCE_DATE_EPOCH.
foreach(package ${CPACK_PACKAGE_FILES})
  set(folder ${CPACK_TOPLEVEL_DIRECTORY}/repacked)
  file(REMOVE_RECURSE ${folder})
  execute_process(COMMAND dpkg-deb --raw-extract ${package} ${folder} COMMAND_ERROR_IS_FATAL ANY)
  execute_process(COMMAND chmod --recursive u=rwX,go=rX ${folder} COMMAND_ERROR_IS_FATAL ANY)
  execute_process(COMMAND ${CMAKE_COMMAND} -E env LC_ALL=C sort --key=2 --output=${folder}/DEBIAN/md5sums
    ${folder}/DEBIAN/md5sums COMMAND_ERROR_IS_FATAL ANY)
  execute_process(COMMAND dpkg-deb --root-owner-group --build ${folder} ${package}
    OUTPUT_QUIET COMMAND_ERROR_IS_FATAL ANY)
endforeach()
