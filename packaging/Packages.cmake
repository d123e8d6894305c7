# What cpack needs to make the Debian packages and the RPMs; scripts/make-packages calls it. One package per install component:
#
#   component     package
#   library       libzav1
#   development   libzav-dev
#   toolkit       zav-toolkit
#   command       zav
#   python        python3-zav
#   doc           zav-doc
set(revision 1)
set(maintainer "zav maintainers <maintainers@zav.example>")
set(components library development toolkit command python doc)
set(names libzav1 libzav-dev zav-toolkit zav python3-zav zav-doc)
get_target_property(soversion zav SOVERSION)
if(NOT soversion EQUAL 1)
  message(FATAL_ERROR "the package libzav1 is named after the soname libzav.so.1, but the library has libzav.so.${soversion}")
endif()
set(same "(= ${PROJECT_VERSION}-${revision})")

# The file that the library reads when a program names no directory.
set(ZAV_FULL_HOME_DIR ${CMAKE_INSTALL_PREFIX}/${ZAV_HOME_DIR})
configure_file(zav.ini.in ${CMAKE_CURRENT_BINARY_DIR}/zav.ini @ONLY)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/zav.ini DESTINATION /etc/zav COMPONENT toolkit)

# The changelog of the packages is that of the project. Its day is that of the last commit, so that the same sources give the
# same packages.
execute_process(COMMAND git -C ${PROJECT_SOURCE_DIR} log -1 --format=%ct
  OUTPUT_VARIABLE committed OUTPUT_STRIP_TRAILING_WHITESPACE ERROR_QUIET)
if(committed AND NOT DEFINED ENV{SOURCE_DATE_EPOCH})
  set(ENV{SOURCE_DATE_EPOCH} ${committed})
endif()
string(TIMESTAMP day "%a, %d %b %Y %H:%M:%S +0000" UTC)
file(WRITE ${CMAKE_CURRENT_BINARY_DIR}/changelog.Debian
  "zav (${PROJECT_VERSION}-${revision}) unstable; urgency=medium\n\n"
  "  * Package version ${PROJECT_VERSION}; the changelog of the project lists the changes.\n\n"
  " -- ${maintainer}  ${day}\n")
# For the description of the binary interface; packages are stripped.
target_compile_options(zav_objects PRIVATE -g)

configure_file(${PROJECT_SOURCE_DIR}/CHANGELOG.md ${CMAKE_CURRENT_BINARY_DIR}/changelog COPYONLY)
foreach(changelog changelog changelog.Debian)
  execute_process(COMMAND gzip -9nf ${CMAKE_CURRENT_BINARY_DIR}/${changelog} COMMAND_ERROR_IS_FATAL ANY)
endforeach()

# A link to the library needs a version that is at least as new.
file(WRITE ${CMAKE_CURRENT_BINARY_DIR}/shlibs "libzav ${soversion} libzav${soversion} (>= ${PROJECT_VERSION})\n")
file(WRITE ${CMAKE_CURRENT_BINARY_DIR}/triggers "activate-noawait ldconfig\n")

# What lintian would report without need.
set(first "not made for the archive of Debian, so no bug report asks for it")
set(databases "it reads the databases of other systems and trees, too, where no dpkg can be asked")
set(ldconfig "CPack adds the calls, also where there is a trigger")
foreach(component name IN ZIP_LISTS components names)
  install(FILES
    copyright ${CMAKE_CURRENT_BINARY_DIR}/changelog.gz ${CMAKE_CURRENT_BINARY_DIR}/changelog.Debian.gz
    DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/${name} COMPONENT ${component})
  set(overrides "# ${first}\n${name}: initial-upload-closes-no-bugs *\n")
  if(component MATCHES "^(toolkit|command)$")
    string(APPEND overrides "# ${databases}\n${name}: uses-dpkg-database-directly *\n")
  endif()
  if(component STREQUAL library)
    string(APPEND overrides "# ${ldconfig}\n${name}: maintscript-calls-ldconfig *\n")
  endif()
  file(WRITE ${CMAKE_CURRENT_BINARY_DIR}/overrides/${name} "${overrides}")
  install(FILES ${CMAKE_CURRENT_BINARY_DIR}/overrides/${name}
    DESTINATION ${CMAKE_INSTALL_DATADIR}/lintian/overrides COMPONENT ${component})
endforeach()

set(CPACK_PACKAGE_NAME zav)
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_PACKAGE_VENDOR "zav maintainers")
set(CPACK_PACKAGE_CONTACT ${maintainer})
set(CPACK_PACKAGE_DIRECTORY ${CMAKE_BINARY_DIR}/packages)
set(CPACK_COMPONENTS_ALL ${components})
set(CPACK_COMPONENTS_GROUPING IGNORE)
set(CPACK_PACKAGING_INSTALL_PREFIX ${CMAKE_INSTALL_PREFIX})
set(CPACK_STRIP_FILES ON)
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS
  OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_RELEASE ${revision})
set(CPACK_DEBIAN_PACKAGE_SOURCE zav)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS ${CMAKE_LIBRARY_OUTPUT_DIRECTORY})
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
set(CPACK_RPM_COMPONENT_INSTALL ON)
set(CPACK_RPM_FILE_NAME RPM-DEFAULT)
set(CPACK_RPM_PACKAGE_RELEASE ${revision})
set(CPACK_RPM_PACKAGE_LICENSE Apache-2.0)
set(CPACK_RPM_EXCLUDE_FROM_AUTO_FILELIST_ADDITION
  /etc /usr/libexec /usr/lib64/cmake /usr/lib64/pkgconfig /usr/lib/python3 /usr/lib/python3/dist-packages
  /usr/share/bash-completion /usr/share/bash-completion/completions /usr/share/zsh /usr/share/zsh/vendor-completions
  /usr/share/fish /usr/share/fish/vendor_completions.d /usr/share/man /usr/share/man/man1 /usr/share/man/man3
  /usr/share/man/man5 /usr/share/man/man8 /usr/share/lintian /usr/share/lintian/overrides)

# zav_package(COMPONENT SECTION ARCHITECTURE SUMMARY TEXT [NAME VALUE]...): NAME without CPACK_DEBIAN_COMPONENT_PACKAGE_ or
# CPACK_RPM_COMPONENT_PACKAGE_ in front.
function(zav_package component section architecture summary text)
  list(FIND components ${component} index)
  list(GET names ${index} name)
  string(TOUPPER ${component} upper)
  set(debian CPACK_DEBIAN_${upper}_)
  set(rpm CPACK_RPM_${component}_)
  set(${debian}PACKAGE_NAME ${name} PARENT_SCOPE)
  set(${debian}PACKAGE_SECTION ${section} PARENT_SCOPE)
  set(${debian}DESCRIPTION "${summary}\n${text}" PARENT_SCOPE)
  set(${rpm}PACKAGE_NAME ${name} PARENT_SCOPE)
  set(${rpm}PACKAGE_SUMMARY "${summary}" PARENT_SCOPE)
  set(${rpm}PACKAGE_DESCRIPTION "${text}" PARENT_SCOPE)
  set(CPACK_COMPONENT_${upper}_DESCRIPTION "${text}" PARENT_SCOPE)
  if(architecture STREQUAL all)
    set(${debian}PACKAGE_ARCHITECTURE all PARENT_SCOPE)
    set(${rpm}PACKAGE_ARCHITECTURE noarch PARENT_SCOPE)
  else()
    set(${debian}PACKAGE_SHLIBDEPS ON PARENT_SCOPE)
  endif()
  while(ARGN)
    list(POP_FRONT ARGN kind value)
    set(${debian}PACKAGE_${kind} "${value}" PARENT_SCOPE)
    if(kind STREQUAL DEPENDS)
      string(REGEX REPLACE "[()]" "" value "${value}")
      string(REGEX REPLACE ", python3$" "" value "${value}")
      set(${rpm}PACKAGE_REQUIRES "${value}" PARENT_SCOPE)
    endif()
  endwhile()
endfunction()

set(about
"zav takes inventories of machines: processors, disks, network adapters,
packages and more, and the software that signatures describe.")
zav_package(library libs any "inventory client library"
"${about}
.
This package contains the shared library. It runs the scanners of the
package zav-toolkit, or those of another inventory toolkit.")
set(CPACK_DEBIAN_LIBRARY_PACKAGE_CONTROL_EXTRA ${CMAKE_CURRENT_BINARY_DIR}/shlibs ${CMAKE_CURRENT_BINARY_DIR}/triggers)
set(CPACK_DEBIAN_LIBRARY_PACKAGE_RECOMMENDS "zav-toolkit")

zav_package(development libdevel any "inventory client library (development files)"
"${about}
.
This package contains the headers for C and C++, the files with which CMake
and pkg-config find the library, and the manual pages of its functions."
  DEPENDS "libzav1 ${same}")
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SUGGESTS "zav-doc, zav-toolkit")

zav_package(toolkit admin any "hardware and software scanners for machine inventories"
"${about}
.
This package contains the scanners quorvah (hardware) and quorvis (software),
a catalogue of signatures, and the schemas of what the scanners read and
write.")
set(CPACK_DEBIAN_TOOLKIT_PACKAGE_RECOMMENDS "pci.ids, usb.ids")
set(CPACK_DEBIAN_TOOLKIT_PACKAGE_CONTROL_EXTRA ${CMAKE_CURRENT_SOURCE_DIR}/debian/conffiles)
set(CPACK_RPM_toolkit_USER_FILELIST "%config(noreplace) /etc/zav/zav.ini")

zav_package(command admin any "inventory of the hardware and software of this machine"
"${about}
.
This package contains the command zav, which prints inventories as tables,
JSON, CSV or XML, compares them, and writes bills of materials."
  DEPENDS "libzav1 ${same}, zav-toolkit ${same}")

zav_package(python python all "inventory of the hardware and software of this machine (Python)"
"${about}
.
This package contains the Python module zav: typed records, exceptions and
logging."
  DEPENDS "libzav1 (>= ${PROJECT_VERSION}), python3")
set(CPACK_DEBIAN_PYTHON_PACKAGE_RECOMMENDS "zav-toolkit")
set(CPACK_DEBIAN_PYTHON_PACKAGE_CONTROL_EXTRA
  ${CMAKE_CURRENT_SOURCE_DIR}/debian/postinst ${CMAKE_CURRENT_SOURCE_DIR}/debian/prerm)

zav_package(doc doc all "inventory client library (documentation)"
"${about}
.
This package contains the documentation as web pages with a search: guides
for programmers and administrators, and references.")

# Else it would stand in front of each description.
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "")
include(CPack)
