// A console tool that gives an existing database a geometry column and its spatial index.
#include <iostream>

#include "AnnotationLayerNS.h"
#include "SpatialiteHandler.h"
#include "TextConversion.h"

using AnnotationLayerInner::Utf8ToLocal;

namespace AnnotationLayerNS {

bool BuildDBAsSpatialite(const std::string& table, const std::string& column,
                         const std::string& dbPath) {
  // Messages are local code page text, like every text the module prints.
  std::cout << Utf8ToLocal("建立") << dbPath << Utf8ToLocal("的空间数据索引触发器 >>>>>")
            << std::endl;
  bool result = false;
  CSpatialiteHandler handler;
  if (!handler.Open(dbPath, false)) {
    std::cout << "Error: Open failed" << std::endl;
  } else {
    result = handler.AddGeometryColumn(table, column, 0);
    if (!result) {
      std::cout << Utf8ToLocal("Error: geom_point failed. 可能已经创建过") << std::endl;
    }
    handler.Close();
  }
  std::cout << table << "." << column << Utf8ToLocal(" 触发器构建结束 <<<<<") << std::endl;
  return result;
}

}  // namespace AnnotationLayerNS
