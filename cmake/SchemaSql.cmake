# Generates SchemaSql.cpp: schema/orvmysql.sql (the baseline) and every
# schema/migrations/NNNN-what.sql as string constants. A migration's name must
# be four digits, "-" and a word of letters, digits and "-"; numbers are unique.

file(READ ${PROJECT_SOURCE_DIR}/schema/orvmysql.sql ORVMYSQL_SCHEMA_SQL)
set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/schema/orvmysql.sql)

file(GLOB ORVMYSQL_MIGRATION_FILES CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/schema/migrations/*.sql)
list(SORT ORVMYSQL_MIGRATION_FILES)
set(ORVMYSQL_MIGRATION_ENTRIES "")
set(numbers_seen "")
foreach(file IN LISTS ORVMYSQL_MIGRATION_FILES)
  get_filename_component(name ${file} NAME)
  string(REGEX REPLACE "\\.sql$" "" name "${name}")
  if(NOT name MATCHES "^([0-9][0-9][0-9][0-9])-[A-Za-z0-9-]+$")
    message(FATAL_ERROR "schema/migrations/${name}.sql: a migration is named NNNN-what.sql")
  endif()
  if(CMAKE_MATCH_1 IN_LIST numbers_seen)
    message(FATAL_ERROR "schema/migrations: two migrations numbered ${CMAKE_MATCH_1}")
  endif()
  list(APPEND numbers_seen ${CMAKE_MATCH_1})
  file(READ ${file} sql)
  string(APPEND ORVMYSQL_MIGRATION_ENTRIES "    {\"${name}\", R\"orvsql(${sql})orvsql\"},\n")
  set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${file})
endforeach()

configure_file(${PROJECT_SOURCE_DIR}/tools/SchemaSql.cpp.in
  ${PROJECT_BINARY_DIR}/generated/tools/SchemaSql.cpp @ONLY)
