# What "cmake --install" puts where, in two components: "program" is the console program, "window" the window program.
# Included last, since it needs both programs.

include(GNUInstallDirs)
set(VANTREL_ZSH_COMPLETIONS ${CMAKE_INSTALL_DATADIR}/zsh/site-functions CACHE STRING
    "Folder for zsh's completions; Debian's own programs use share/zsh/vendor-completions")
set(VANTREL_ICON_SIZES 16 32 48 256)
# A licence is installed when the sources hold one.
file(GLOB VANTREL_LICENCE CONFIGURE_DEPENDS ${CMAKE_SOURCE_DIR}/LICEN[CS]E* ${CMAKE_SOURCE_DIR}/COPYING*)

# Makes a file at installation: vantrel_made_file(COMPONENT FILE COMMAND…). FILE is in the build folder and holds what the
# command prints. So it fits the program that is installed, and everyday builds do without it.
function(vantrel_made_file COMPONENT FILE)
  list(JOIN ARGN "\" \"" command)
  install(CODE "execute_process(COMMAND \"${command}\" OUTPUT_FILE \"${FILE}\" COMMAND_ERROR_IS_FATAL ANY)" COMPONENT ${COMPONENT})
endfunction()

# Installs a text packed. The packed file holds neither name nor time, so equal texts give equal files.
function(vantrel_install_packed COMPONENT TEXT NAME FOLDER)
  find_program(GZIP gzip REQUIRED)
  vantrel_made_file(${COMPONENT} ${VANTREL_MADE}/${COMPONENT}-${NAME} ${GZIP} -9nc ${TEXT})
  install(FILES ${VANTREL_MADE}/${COMPONENT}-${NAME} DESTINATION ${FOLDER} RENAME ${NAME} COMPONENT ${COMPONENT})
endfunction()

# The change log, also in Debian's form, and the licence if there is one.
function(vantrel_install_notes COMPONENT NAME)
  set(folder ${CMAKE_INSTALL_DATADIR}/doc/${NAME})
  vantrel_made_file(${COMPONENT} ${VANTREL_MADE}/${COMPONENT}-changelog ${CMAKE_SOURCE_DIR}/cmake/debian-changelog.sh
                    ${CMAKE_SOURCE_DIR}/CHANGELOG.md)
  vantrel_install_packed(${COMPONENT} ${VANTREL_MADE}/${COMPONENT}-changelog changelog.gz ${folder})
  install(FILES ${CMAKE_SOURCE_DIR}/CHANGELOG.md DESTINATION ${folder} COMPONENT ${COMPONENT})
  if(VANTREL_LICENCE)
    list(GET VANTREL_LICENCE 0 licence)
    install(FILES ${licence} DESTINATION ${folder} RENAME copyright COMPONENT ${COMPONENT})
  endif()
endfunction()

function(vantrel_install_docs FOLDER)
  install(DIRECTORY ${CMAKE_SOURCE_DIR}/docs/ DESTINATION ${FOLDER} COMPONENT program
          FILE_PERMISSIONS OWNER_READ OWNER_WRITE GROUP_READ WORLD_READ)
endfunction()

function(vantrel_install_program)
  install(TARGETS vantrel RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT program)
  foreach(topic man bash zsh fish)
    vantrel_made_file(program ${VANTREL_MADE}/${topic} $<TARGET_FILE:vantrel> --nooptions --help ${topic})
  endforeach()
  vantrel_install_packed(program ${VANTREL_MADE}/man vantrel.1.gz ${CMAKE_INSTALL_MANDIR}/man1)
  install(FILES ${VANTREL_MADE}/bash DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions RENAME vantrel COMPONENT program)
  install(FILES ${VANTREL_MADE}/zsh DESTINATION ${VANTREL_ZSH_COMPLETIONS} RENAME _vantrel COMPONENT program)
  install(FILES ${VANTREL_MADE}/fish DESTINATION ${CMAKE_INSTALL_DATADIR}/fish/vendor_completions.d RENAME vantrel.fish COMPONENT program)
  vantrel_install_docs(${CMAKE_INSTALL_DATADIR}/doc/vantrel)
  vantrel_install_notes(program vantrel)
endfunction()

function(vantrel_install_window_program)
  set(source ${CMAKE_SOURCE_DIR}/app/gui)
  set(share ${CMAKE_INSTALL_DATADIR})
  install(TARGETS vantrel-gui RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT window)
  vantrel_install_packed(window ${source}/vantrel-gui.1 vantrel-gui.1.gz ${CMAKE_INSTALL_MANDIR}/man1)
  install(FILES ${source}/vantrel-gui.desktop ${source}/vantrel-gui-open.desktop DESTINATION ${share}/applications COMPONENT window)
  install(FILES ${source}/vantrel-gui-types.xml DESTINATION ${share}/mime/packages RENAME vantrel-gui.xml COMPONENT window)
  install(FILES ${source}/vantrel-gui.metainfo.xml DESTINATION ${share}/metainfo COMPONENT window)
  install(FILES ${source}/icons/vantrel.svg DESTINATION ${share}/icons/hicolor/scalable/apps COMPONENT window)
  foreach(size ${VANTREL_ICON_SIZES})
    install(FILES ${source}/icons/vantrel-${size}.png DESTINATION ${share}/icons/hicolor/${size}x${size}/apps RENAME vantrel.png
            COMPONENT window)
  endforeach()
  vantrel_install_notes(window vantrel-gui)
endfunction()

# On Windows all files of a program are in one folder. The documents are beside them.
function(vantrel_install_on_windows)
  install(TARGETS vantrel RUNTIME DESTINATION . COMPONENT program)
  vantrel_install_docs(docs)
  install(FILES ${CMAKE_SOURCE_DIR}/CHANGELOG.md ${VANTREL_LICENCE} DESTINATION . COMPONENT program)
  if(VANTREL_WINDOW)
    install(TARGETS vantrel-gui RUNTIME DESTINATION . COMPONENT window)
    vantrel_install_qt()
  endif()
endfunction()

# Qt's libraries and plug-ins, and the compiler's. CMake strips programs that it has built, but not these.
function(vantrel_install_qt)
  get_target_property(core Qt6::Core LOCATION)
  get_filename_component(bin ${core} DIRECTORY)
  file(GLOB libraries ${bin}/lib*.dll)
  foreach(library Core Gui Widgets PrintSupport)
    list(APPEND libraries ${bin}/Qt6${library}.dll)
  endforeach()
  file(GLOB styles ${bin}/../plugins/styles/*.dll)
  install(FILES ${libraries} DESTINATION . COMPONENT window)
  install(FILES ${bin}/../plugins/platforms/qwindows.dll DESTINATION platforms COMPONENT window)
  install(FILES ${styles} DESTINATION styles COMPONENT window)
  install(CODE "
    if(CMAKE_INSTALL_DO_STRIP)
      file(GLOB_RECURSE libraries \"\$ENV{DESTDIR}\${CMAKE_INSTALL_PREFIX}/*.dll\")
      execute_process(COMMAND \"${CMAKE_STRIP}\" \${libraries} COMMAND_ERROR_IS_FATAL ANY)
    endif()" COMPONENT window)
endfunction()

set(VANTREL_MADE ${CMAKE_BINARY_DIR}/installed)
file(MAKE_DIRECTORY ${VANTREL_MADE})
if(WIN32)
  vantrel_install_on_windows()
else()
  vantrel_install_program()
  if(VANTREL_WINDOW)
    vantrel_install_window_program()
  endif()
endif()
