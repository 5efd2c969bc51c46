#include "NodeOrderRebuilder.h"

#include "NodeOrderRebuilderImpl.h"

CNodeOrderRebuilder::CNodeOrderRebuilder(IAnnotationDBDataModel* model)
    : impl_(std::make_shared<CNodeOrderRebuilderImpl>(model)) {}

CNodeOrderRebuilder::~CNodeOrderRebuilder() = default;

CNodeOrderRebuilder::CNodeOrderRebuilder(const CNodeOrderRebuilder& other) = default;

CNodeOrderRebuilder& CNodeOrderRebuilder::operator=(const CNodeOrderRebuilder& other) = default;

bool CNodeOrderRebuilder::RebuildNodeOrderNum(const std::string& uuid, bool recursive,
                                              IRebuildProgress* progress) {
  return impl_ && impl_->RebuildNodeOrderNum(uuid, recursive, progress);
}

bool CNodeOrderRebuilder::IsRebuilding() const { return impl_ && impl_->IsRebuilding(); }
