# Compiles the schema description (schema/hr_schema.sql, the source of
# truth for both engines) into orvalis_schema: a generated source file holds
# its text as raw string literals, rebuilt whenever the .sql file changes.
# Included by the top-level CMakeLists.txt after orvalis_schema is defined.
set(ORVALIS_DDL_FILE ${CMAKE_SOURCE_DIR}/schema/hr_schema.sql)
set(ORVALIS_DDL_SOURCE ${CMAKE_BINARY_DIR}/generated/orvalis/schema_ddl_text.cc)
add_custom_command(
  OUTPUT ${ORVALIS_DDL_SOURCE}
  COMMAND ${CMAKE_COMMAND}
    -DSCHEMA_DDL=${ORVALIS_DDL_FILE}
    -DOUTPUT=${ORVALIS_DDL_SOURCE}
    -P ${CMAKE_SOURCE_DIR}/schema/embed_ddl_script.cmake
  DEPENDS ${ORVALIS_DDL_FILE} ${CMAKE_SOURCE_DIR}/schema/embed_ddl_script.cmake
  COMMENT "Embedding the schema DDL"
  VERBATIM)
target_sources(orvalis_schema PRIVATE ${ORVALIS_DDL_SOURCE})
