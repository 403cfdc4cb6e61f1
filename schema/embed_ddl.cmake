# Compiles the schema DDL files (the source of truth) into orvalis_schema:
# a generated source file holds their texts as raw string literals, rebuilt
# whenever a .sql file changes. Included by the top-level CMakeLists.txt
# after the subsystem libraries are defined.
set(ORVALIS_DDL_FILES
  ${CMAKE_SOURCE_DIR}/schema/sqlite.sql
  ${CMAKE_SOURCE_DIR}/schema/postgresql.sql)
set(ORVALIS_DDL_SOURCE ${CMAKE_BINARY_DIR}/generated/orvalis/schema_ddl_text.cc)
add_custom_command(
  OUTPUT ${ORVALIS_DDL_SOURCE}
  COMMAND ${CMAKE_COMMAND}
    -DSQLITE_DDL=${CMAKE_SOURCE_DIR}/schema/sqlite.sql
    -DPOSTGRESQL_DDL=${CMAKE_SOURCE_DIR}/schema/postgresql.sql
    -DOUTPUT=${ORVALIS_DDL_SOURCE}
    -P ${CMAKE_SOURCE_DIR}/schema/embed_ddl_script.cmake
  DEPENDS ${ORVALIS_DDL_FILES} ${CMAKE_SOURCE_DIR}/schema/embed_ddl_script.cmake
  COMMENT "Embedding the schema DDL"
  VERBATIM)
target_sources(orvalis_schema PRIVATE ${ORVALIS_DDL_SOURCE})
