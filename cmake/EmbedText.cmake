# Writes OUTPUT, a C++ file defining AnnotationLayerInner::kAnnotationSchemaSql with the text of INPUT.
file(READ ${INPUT} text)
set(delim "SQL_SCHEMA_TEXT")
file(WRITE ${OUTPUT}
"// Generated from annotation_schema.sql; do not edit.\n"
"namespace AnnotationLayerInner {\n"
"extern const char* const kAnnotationSchemaSql;\n"
"const char* const kAnnotationSchemaSql = R\"${delim}(${text})${delim}\";\n"
"}  // namespace AnnotationLayerInner\n")
