# tessara_qml_module(NAME URI [SOURCES ...] [QML ...] [USES ...] [PUBLIC ...] [PRIVATE ...])
# A static library that is a QML module as well. Its types come with the program that links it and
# calls its registration (see InterfaceEngine); there is no plugin. The code that Qt's tools generate
# for it is not held to our warnings, what we write by hand is.
# USES are the QML modules whose types its C++ types are derived from or made of.
function(tessara_qml_module name uri)
  cmake_parse_arguments(ARG "" "" "SOURCES;QML;USES;PUBLIC;PRIVATE" ${ARGN})
  # One folder for all of them, so that the linter of one finds the others.
  set(QT_QML_OUTPUT_DIRECTORY "${CMAKE_BINARY_DIR}/qml")
  add_library(${name} STATIC)
  set_target_properties(${name} PROPERTIES AUTOMOC ON)
  set(options "")
  if(CMAKE_BUILD_TYPE STREQUAL "Debug")
    # Compiling QML ahead takes longer than the whole of the module's C++, and saves a debug build
    # nothing.
    set(options NO_CACHEGEN)
  endif()
  foreach(file IN LISTS ARG_QML)
    # Files are known by their own name, wherever they stand in the module's folder.
    get_filename_component(alias ${file} NAME)
    set_source_files_properties(${file} PROPERTIES QT_RESOURCE_ALIAS ${alias})
  endforeach()
  qt_add_qml_module(${name}
    URI ${uri}
    VERSION 1.0
    RESOURCE_PREFIX /qt/qml
    NO_PLUGIN
    DEPENDENCIES ${ARG_USES}
    ${options}
    SOURCES ${ARG_SOURCES}
    QML_FILES ${ARG_QML})
  target_compile_definitions(${name} PUBLIC QT_NO_KEYWORDS)
  # The generated registration includes headers by their mere names.
  set(folders ${ARG_SOURCES})
  list(FILTER folders INCLUDE REGEX "\\.h$")
  list(TRANSFORM folders REPLACE "/[^/]*$" "")
  list(REMOVE_DUPLICATES folders)
  target_include_directories(${name} PUBLIC include PRIVATE src ${folders})
  target_link_libraries(${name}
    PUBLIC ${ARG_PUBLIC} PRIVATE ${ARG_PRIVATE} $<LINK_ONLY:TessaraBuildFlags>)
  set_property(SOURCE ${ARG_SOURCES} APPEND PROPERTY COMPILE_OPTIONS
    "$<TARGET_PROPERTY:TessaraBuildFlags,INTERFACE_COMPILE_OPTIONS>")
  set_property(SOURCE ${ARG_SOURCES} APPEND PROPERTY COMPILE_DEFINITIONS
    "$<TARGET_PROPERTY:TessaraBuildFlags,INTERFACE_COMPILE_DEFINITIONS>")
endfunction()
