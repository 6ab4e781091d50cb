# Run by cpack on the files of all packages, just before it packs them: adds and moves what Debian wants that an
# installation doesn't have.

find_program(GZIP gzip REQUIRED)
set(readable OWNER_READ OWNER_WRITE GROUP_READ WORLD_READ)

function(compress file)
  execute_process(COMMAND "${GZIP}" -9 --no-name --force "${file}" COMMAND_ERROR_IS_FATAL ANY)
endfunction()

# In Debian's form. The time is that of SOURCE_DATE_EPOCH where it is set.
string(TIMESTAMP now "%a, %d %b %Y %H:%M:%S +0000" UTC)
set(changelog "korvel (${CPACK_PACKAGE_VERSION}-${CPACK_DEBIAN_PACKAGE_RELEASE}) stable; urgency=medium

  * What changed in ${CPACK_PACKAGE_VERSION} is told by changelog.gz.

 -- ${CPACK_PACKAGE_CONTACT}  ${now}
")

foreach(group IN ITEMS library development tools)
  string(TOUPPER ${group} upper)
  set(root "${CPACK_TEMPORARY_INSTALL_DIRECTORY}/${group}/usr")
  if(NOT IS_DIRECTORY "${root}")
    continue() # cpack was told to leave it out
  endif()
  set(doc "${root}/share/doc/${CPACK_DEBIAN_${upper}_PACKAGE_NAME}")
  if(IS_DIRECTORY "${root}/share/doc/korvel")
    file(RENAME "${root}/share/doc/korvel" "${doc}")
  endif()
  file(WRITE "${doc}/changelog.Debian" "${changelog}")
  file(COPY_FILE "${CMAKE_CURRENT_LIST_DIR}/../CHANGELOG.md" "${doc}/changelog")
  file(COPY_FILE "${CMAKE_CURRENT_LIST_DIR}/debian-copyright" "${doc}/copyright")
  compress("${doc}/changelog.Debian")
  compress("${doc}/changelog")
  set(overrides "${root}/share/lintian/overrides/${CPACK_DEBIAN_${upper}_PACKAGE_NAME}")
  file(WRITE "${overrides}" "# Not a package of Debian's, whose bug tracker knows nothing of it.\n"
                            "initial-upload-closes-no-bugs *\n")
  if(group STREQUAL "library")
    file(APPEND "${overrides}" "# CPack writes these scripts, and can't be told not to; the trigger is there too.\n"
                               "maintscript-calls-ldconfig *\n")
  endif()
  file(CHMOD "${doc}/changelog.Debian.gz" "${doc}/changelog.gz" "${doc}/copyright" "${overrides}"
       FILE_PERMISSIONS ${readable})
endforeach()

set(tools "${CPACK_TEMPORARY_INSTALL_DIRECTORY}/tools/usr")
if(IS_DIRECTORY "${tools}")
  # The loader finds the library of a package by itself.
  file(RPATH_REMOVE FILE "${tools}/bin/korvel")
  compress("${tools}/share/man/man1/korvel.1")
  file(RENAME "${tools}/share/zsh/site-functions" "${tools}/share/zsh/vendor-completions")
endif()
