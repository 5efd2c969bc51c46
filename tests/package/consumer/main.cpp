// Builds against the installed headers and libraries only, then opens a new database.
#include <annotationlayer/AnnotationLayer.h>

#include <cstdio>
#include <cstdlib>
#include <string>

int main(int argc, char** argv) {
  if (argc < 2) return 2;
  const std::string dir = argv[1];
  CZuCoreApplication::GetInstance()->SetDataDir(dir);
  const std::string path = dir + "/consumer.db";
  if (!AnnotationLayerNS::CreateAnnotationDatabase(path)) return 3;

  IAnnotationLayerModule* module = GetOrCreateAnnotationLayerModule();
  if (module == nullptr || !module->Start()) return 4;
  IAnnotationDBDataModel* model = module->CreateDataModel("CSpatialiteDBDataModel", "consumer");
  if (model == nullptr || !model->Install(path)) return 5;
  CFolderOption folder;
  folder.SetName("consumer");
  const bool empty = model->IsEmpty();
  DestroyAnnotationLayerModule();
  std::printf("consumer ok (empty=%d, uuid length=%zu)\n", empty ? 1 : 0,
              AnnotationLayerNS::ZuGenerateUUID().size());
  return empty ? 0 : 6;
}
