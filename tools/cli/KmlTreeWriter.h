// CKmlTreeWriter writes a folder or layer with everything below it as one KML document that keeps
// the tree: each folder and layer a <Folder> (in sibling order; a layer carries the ExtendedData
// entry "annotationlayer:node" = "layer" so that a layer without features of its own comes back
// as a layer), each feature a <Placemark> with its name, geometry (Z kept; altitudeMode absolute
// when any Z is not 0), its text field "description" as <description>, its other fields as
// typed <ExtendedData> (one <Schema> per layer from the layer's field header), and its style as a
// shared <Style> referenced by styleUrl: pen -> LineStyle, brush -> PolyStyle, icon ->
// IconStyle, label -> LabelStyle (text size as scale of 12 pt). A check state of 0 (unchecked)
// is written as <visibility>0</visibility>, an expanded folder or layer as <open>1</open>.
//
// With icon packing (KMZ), icons that are local files are referred to as "files/<name>" and
// listed in PackedFiles for the archive.
//
// Threading contract: one thread; nothing may write through the model during Write.
#ifndef ANNOTATIONLAYER_CLI_KML_TREE_WRITER_H
#define ANNOTATIONLAYER_CLI_KML_TREE_WRITER_H

#include <cstdint>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include "AnnotationLayerTypes.h"
#include "FeatureStyleSet.h"

class CInterruptFlag;
class IAnnotationDBDataModel;
class QIODevice;
class QXmlStreamWriter;

class CKmlTreeWriter {
 public:
  struct Summary {
    int folders = 0;
    int layers = 0;
    int64_t features = 0;
    int styles = 0;
  };
  enum E_OUTCOME { OUTCOME_DONE = 0, OUTCOME_FAILED = 1, OUTCOME_INTERRUPTED = 2 };
  // The ExtendedData entry that marks a <Folder> written for a layer, and its value.
  static constexpr const char* kNodeKey = "annotationlayer:node";
  static constexpr const char* kLayerNode = "layer";
  // The label size that LabelStyle's scale 1 stands for, in points.
  static constexpr double kLabelPoints = 12.0;

  // Neither pointer is owned; `interrupt` may be null.
  CKmlTreeWriter(IAnnotationDBDataModel* model, const CInterruptFlag* interrupt);
  CKmlTreeWriter(const CKmlTreeWriter&) = delete;
  CKmlTreeWriter& operator=(const CKmlTreeWriter&) = delete;

  // Writes the subtree of `uuid` (a folder or layer) to `out`. On OUTCOME_FAILED `error` says why.
  E_OUTCOME Write(const std::string& uuid, E_NODE_KIND kind, bool packIcons, QIODevice* out,
                  Summary* summary, std::string* error);
  // (archive name, local path) of each icon file the document refers to inside a KMZ.
  const std::vector<std::pair<std::string, std::string>>& PackedFiles() const { return packed_; }

 private:
  struct Schema {
    std::string id;
    std::vector<std::pair<std::string, E_FIELD_OFST_TYPE>> fields;  // UTF-8 keys
  };

  bool Collect(const std::string& uuid, E_NODE_KIND kind);
  bool WriteNode(QXmlStreamWriter& xml, const std::string& uuid, E_NODE_KIND kind,
                 const std::string& name, int checkState, bool expanded);
  void WritePlacemark(QXmlStreamWriter& xml, const std::string& uuid, const std::string& layer,
                      const std::string& name, bool checked);
  void WriteStyle(QXmlStreamWriter& xml, const std::string& id, const CFeatureStyleSet& styles);
  std::string IconHref(const std::string& localUrl);
  bool Interrupted() const;

  IAnnotationDBDataModel* model_;
  const CInterruptFlag* interrupt_;
  bool packIcons_ = false;
  Summary* summary_ = nullptr;
  std::map<std::string, std::string> styleIds_;      // feature uuid -> style id
  std::map<std::string, std::string> styleIdOfKey_;  // style JSON -> style id
  std::vector<std::pair<std::string, CFeatureStyleSet>> styles_;
  std::map<std::string, Schema> schemas_;  // layer uuid -> schema
  std::vector<std::string> schemaOrder_;
  std::map<std::string, std::string> iconNames_;  // local path -> archive name
  std::vector<std::pair<std::string, std::string>> packed_;
};

#endif  // ANNOTATIONLAYER_CLI_KML_TREE_WRITER_H
