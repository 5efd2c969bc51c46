// CSampleAtlas builds the demo's sample database from Natural Earth's countries as published in
// world-atlas (TopoJSON, read by OGR): the countries as filled polygons, their coastlines and a
// graticule as lines, a point inside every country, each layer with its attributes and styles, in
// nested folders below one "World atlas" folder:
//
//   World atlas/Places/Country centres     points, one inside each country
//   World atlas/Physical/Coastline         lines, the outer rings of the land
//   World atlas/Political/Countries        polygons, filled in six colours, named
//   World atlas/Graticule                  lines every 30 degrees, dashed
//
// The derived layers are made in an in-memory OGR dataset each and imported through the tool's
// CSourceImporter, so the sample travels the same path as `annotationlayer import`.
//
// Threading contract: one thread; nothing else writes through the model meanwhile.
#ifndef ANNOTATIONLAYER_DEMO_SAMPLE_ATLAS_H
#define ANNOTATIONLAYER_DEMO_SAMPLE_ATLAS_H

#include <cstdint>
#include <string>

class IAnnotationDBDataModel;

class CSampleAtlas {
 public:
  // The uuids of what Build made.
  struct Contents {
    std::string atlasFolder;
    std::string countriesLayer;
    std::string coastlineLayer;
    std::string centresLayer;
    std::string graticuleLayer;
    int64_t features = 0;
  };

  // Builds the sample below the model's top root folder from the TopoJSON file at `path`. False
  // with a reason in `error`; what was imported before the failure stays.
  static bool Build(IAnnotationDBDataModel* model, const std::string& path, Contents* contents,
                    std::string* error);
};

#endif  // ANNOTATIONLAYER_DEMO_SAMPLE_ATLAS_H
