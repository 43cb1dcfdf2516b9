# The component "libraries": the shared libraries and Qt plugins that the programs need, in lib/.
# Libraries of every Linux desktop are excluded: the C and C++ runtimes, X11, OpenGL, fonts.
set(pluginsOfQt ${QT6_INSTALL_PREFIX}/${QT6_INSTALL_PLUGINS})
foreach(plugin platforms/libqxcb.so
               platforminputcontexts/libcomposeplatforminputcontextplugin.so
               platforminputcontexts/libibusplatforminputcontextplugin.so)
  list(APPEND pluginFiles ${pluginsOfQt}/${plugin})
  get_filename_component(kind ${plugin} DIRECTORY)
  install(FILES ${pluginsOfQt}/${plugin} DESTINATION lib/plugins/${kind}
          COMPONENT libraries EXCLUDE_FROM_ALL)
endforeach()
install(FILES qt.conf DESTINATION . COMPONENT libraries EXCLUDE_FROM_ALL)

install(CODE "set(programs \"$<TARGET_FILE:orvane-export>\" \"$<TARGET_FILE:station>\")\nset(plugins \"${pluginFiles}\")"
        COMPONENT libraries EXCLUDE_FROM_ALL)
install(CODE [[
  file(GET_RUNTIME_DEPENDENCIES
    EXECUTABLES ${programs} LIBRARIES ${plugins} RESOLVED_DEPENDENCIES_VAR needed
    PRE_EXCLUDE_REGEXES "^ld-linux" "^lib(c|m|dl|rt|pthread|stdc\\+\\+|gcc_s)\\.so"
      "^lib(X11|X11-xcb|xcb|GL|EGL|GLX|GLdispatch|fontconfig|freetype|expat|z|dbus-1)\\.so")
  foreach(library ${needed})
    file(INSTALL ${library} DESTINATION "${CMAKE_INSTALL_PREFIX}/lib"
         TYPE SHARED_LIBRARY FOLLOW_SYMLINK_CHAIN)
  endforeach()
]] COMPONENT libraries EXCLUDE_FROM_ALL)
