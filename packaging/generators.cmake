# Read by cpack once per generator. Selects the components of each package.
if(CPACK_GENERATOR STREQUAL "DEB")
  set(CPACK_COMPONENTS_ALL station desktop)
  set(CPACK_SET_DESTDIR ON)
  set(CPACK_INSTALL_PREFIX /opt/orvane-export)
else()
  set(CPACK_COMPONENTS_ALL station libraries)
  set(CPACK_COMPONENT_INCLUDE_TOPLEVEL_DIRECTORY ON)
endif()
