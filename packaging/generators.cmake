# Read by cpack once for each generator: what goes into which package.
if(CPACK_GENERATOR STREQUAL "DEB")
  set(CPACK_COMPONENTS_ALL station desktop)
  set(CPACK_SET_DESTDIR ON)
  set(CPACK_INSTALL_PREFIX /opt/orvane-export)
else()
  set(CPACK_COMPONENTS_ALL station libraries)
  set(CPACK_COMPONENT_INCLUDE_TOPLEVEL_DIRECTORY ON)
endif()
