# Run by cpack when the files of all packages stand in folders and none is packed yet: adds copyright and
# changelog, compresses what Debian wants compressed, and opens the folders to everybody, whatever the umask is.

function(run)
  execute_process(COMMAND ${ARGN} COMMAND_ERROR_IS_FATAL ANY)
endfunction()

foreach(component IN LISTS CPACK_COMPONENTS_ALL)
  set(usr "${CPACK_TEMPORARY_DIRECTORY}/${component}/usr")
  string(TOUPPER "CPACK_DEBIAN_${component}_PACKAGE_NAME" name)
  set(documents "${usr}/share/doc/${${name}}")
  file(COPY "${CPACK_TESK_DOCUMENTS}/" DESTINATION "${documents}")
  file(GLOB pages "${usr}/share/man/man*/*")
  run(gzip -9nf "${documents}/changelog" ${pages})
  run(find "${usr}" -type d -exec chmod 755 {} +)
endforeach()
