// Creation of a new, empty annotation database: SpatiaLite metadata, every table of the schema
// (shipped as annotation_schema.sql), the spatial index idx_shape_geom and one top root folder.
//
// Thread safety: stateless; each call opens its own connection.
#ifndef ANNOTATIONLAYER_ANNOTATION_SCHEMA_H
#define ANNOTATIONLAYER_ANNOTATION_SCHEMA_H

#include <string>

#include "AnnotationLayerExport.h"

namespace AnnotationLayerNS {

// Creates the file at `path` (local code page). Refuses, with a log line, a path that already
// exists, so that no existing data is touched. On failure the partly written file is removed.
// On success the top root folder's uuid goes to `rootUuid` when given.
ANNOTATIONLAYER_EXPORT bool CreateAnnotationDatabase(const std::string& path,
                                                     std::string* rootUuid = nullptr);

}  // namespace AnnotationLayerNS

#endif  // ANNOTATIONLAYER_ANNOTATION_SCHEMA_H
