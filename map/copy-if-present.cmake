if(EXISTS ${SRC})
  file(COPY ${SRC}/ DESTINATION ${DST})
endif()
