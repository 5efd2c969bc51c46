#include "FeatureBatchImporter.h"

#include "FeatureBatchImporterImpl.h"

CFeatureBatchImporter::CFeatureBatchImporter(IAnnotationDBDataModel* model,
                                             const std::string& rootUuid)
    : impl_(std::make_shared<CFeatureBatchImporterImpl>(model, rootUuid)) {}

CFeatureBatchImporter::~CFeatureBatchImporter() = default;

CFeatureBatchImporter::CFeatureBatchImporter(const CFeatureBatchImporter& other) = default;

CFeatureBatchImporter& CFeatureBatchImporter::operator=(const CFeatureBatchImporter& other) =
    default;

void CFeatureBatchImporter::SetNameField(const std::string& fieldName) {
  if (impl_) impl_->SetNameField(fieldName);
}

bool CFeatureBatchImporter::BeginImport() { return impl_ && impl_->BeginImport(); }

bool CFeatureBatchImporter::IsImporting() const { return impl_ && impl_->IsImporting(); }

bool CFeatureBatchImporter::InsertLayer(IAnnotationGroup* group, E_LAYER_TYPE type) {
  return impl_ && impl_->InsertLayer(group, type);
}

bool CFeatureBatchImporter::InsertFeature(IAnnotationFeature* feature) {
  return impl_ && impl_->InsertFeature(feature);
}

bool CFeatureBatchImporter::EndImport() { return impl_ && impl_->EndImport(); }

bool CFeatureBatchImporter::DiscardImport() { return impl_ && impl_->DiscardImport(); }
