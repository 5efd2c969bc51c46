// What a walk over the annotation tree calls for each node it meets. The caller implements the
// operations it cares about; the others answer 0 (go on).
//
// Each Apply* receives the data model, the path of the node's ancestors (uuids from the top down),
// the node's uuid and its option record, and answers how the walk goes on: 0 descend into the
// node's children, 1 skip them and go on with the next sibling, 2 stop the whole walk. Every walk
// returns the last answer it got, and 2 travels up through all levels.
//
// Threading contract: called on the walking thread; the records are valid only during the call.
#ifndef ANNOTATIONLAYER_IANNOTATION_DB_OBJECT_VISITOR_H
#define ANNOTATIONLAYER_IANNOTATION_DB_OBJECT_VISITOR_H

#include <list>
#include <string>

#include "AnnotationLayerExport.h"

class IAnnotationDBDataModel;
class CFolderOption;
class CLayerOption;
class CFeatureOption;

class ANNOTATIONLAYER_EXPORT IAnnotationDBObjectVisitor {
 public:
  enum E_HANDLE_TYPE {
    HANDLE_TYPE_CONTINUE = 0,      // go on and descend into the node's children
    HANDLE_TYPE_SKIP_CHILDREN = 1, // go on with the next sibling without descending
    HANDLE_TYPE_STOP = 2,          // stop the whole walk
  };

  virtual ~IAnnotationDBObjectVisitor() = default;

  virtual E_HANDLE_TYPE ApplyFolder(IAnnotationDBDataModel* model,
                                    const std::list<std::string>& path, const std::string& uuid,
                                    const CFolderOption& option) {
    return HANDLE_TYPE_CONTINUE;
  }
  virtual E_HANDLE_TYPE ApplyLayer(IAnnotationDBDataModel* model,
                                   const std::list<std::string>& path, const std::string& uuid,
                                   const CLayerOption& option) {
    return HANDLE_TYPE_CONTINUE;
  }
  virtual E_HANDLE_TYPE ApplyFeature(IAnnotationDBDataModel* model,
                                     const std::list<std::string>& path, const std::string& uuid,
                                     const CFeatureOption& option) {
    return HANDLE_TYPE_CONTINUE;
  }
  // True when the visitor needs only the uuids of features: walks may then hand feature records
  // that carry the uuid alone instead of reading each one whole.
  virtual bool IsOnlyUUID() { return false; }
  // True when the visitor wants the walk to end: walks ask between nodes and stop as on 2.
  virtual bool IsAborted() { return false; }
};

#endif  // ANNOTATIONLAYER_IANNOTATION_DB_OBJECT_VISITOR_H
