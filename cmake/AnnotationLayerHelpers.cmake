# annotationlayer_library(NAME <target> EXPORT_MACRO <macro> SOURCES ... HEADERS ... [LIBS ...])
# Builds one shared library whose exported symbols are marked with <macro>_EXPORT, and installs it
# with its public headers flat under include/annotationlayer/.
function(annotationlayer_library)
  cmake_parse_arguments(AL "" "NAME;OUTPUT" "SOURCES;HEADERS;PUBLIC_LIBS;PRIVATE_LIBS;INCLUDE_DIRS" ${ARGN})
  add_library(${AL_NAME} SHARED ${AL_SOURCES} ${AL_HEADERS})
  if(AL_OUTPUT)
    set_target_properties(${AL_NAME} PROPERTIES OUTPUT_NAME ${AL_OUTPUT})
  endif()
  string(TOUPPER ${AL_NAME} upper)
  target_compile_definitions(${AL_NAME} PRIVATE ${upper}_BUILDING)
  foreach(dir ${AL_INCLUDE_DIRS})
    target_include_directories(${AL_NAME} PUBLIC $<BUILD_INTERFACE:${dir}>)
  endforeach()
  target_include_directories(${AL_NAME} PUBLIC $<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}>)
  target_link_libraries(${AL_NAME} PUBLIC ${AL_PUBLIC_LIBS} PRIVATE ${AL_PRIVATE_LIBS})
  install(TARGETS ${AL_NAME} EXPORT AnnotationLayerTargets
    LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
    ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR}
    RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
  install(FILES ${AL_HEADERS} DESTINATION ${ANNOTATIONLAYER_INCLUDE_DEST})
endfunction()
