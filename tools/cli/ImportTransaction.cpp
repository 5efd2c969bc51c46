#include "ImportTransaction.h"

#include "FeatureBatchImporter.h"

CImportTransaction::~CImportTransaction() {
  if (importer_->IsImporting()) importer_->DiscardImport();
}

bool CImportTransaction::Commit() { return importer_->EndImport(); }
