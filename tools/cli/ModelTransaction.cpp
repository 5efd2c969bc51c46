#include "ModelTransaction.h"

#include "IAnnotationDBDataModel.h"

CModelTransaction::CModelTransaction(IAnnotationDBDataModel* model)
    : model_(model), open_(model->BeginTransaction()) {}

CModelTransaction::~CModelTransaction() {
  if (open_) model_->RollBackTransaction();
}

bool CModelTransaction::Commit() {
  if (!open_) return false;
  open_ = false;
  return model_->CommitTransaction();
}
