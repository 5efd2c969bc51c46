#include "ZuFieldSetObject.h"

#include <algorithm>
#include <chrono>
#include <thread>
#include <utility>

#include "CriticalLock.h"

CZuFieldSetObject::IFieldDataVisitor::~IFieldDataVisitor() = default;

CZuFieldSetObject::CZuFieldSetObject() : lock_(std::make_shared<CCriticalLock>()) {}

CZuFieldSetObject::CZuFieldSetObject(const CZuFieldSetObject& other) : lock_(other.lock_) {
  CCriticalLockGuard guard(lock_.get());
  fields_ = other.fields_;
}

CZuFieldSetObject& CZuFieldSetObject::operator=(const CZuFieldSetObject& other) {
  if (this == &other) return *this;
  const std::shared_ptr<CCriticalLock> sourceLock = other.lock_;
  std::vector<__tagField> copy;
  {
    CCriticalLockGuard guard(sourceLock.get());
    copy = other.fields_;
  }
  // Keeps the old lock alive until it is released, also when this set was its last owner.
  const std::shared_ptr<CCriticalLock> ownLock = lock_;
  CCriticalLockGuard guard(ownLock.get());
  fields_ = std::move(copy);
  lock_ = sourceLock;
  return *this;
}

CZuFieldSetObject::~CZuFieldSetObject() = default;

const CZuFieldSetObject::__tagField* CZuFieldSetObject::Find(const std::string& key) const {
  for (const __tagField& field : fields_) {
    if (field.key == key) return &field;
  }
  return nullptr;
}

CZuFieldSetObject::__tagField* CZuFieldSetObject::Find(const std::string& key) {
  return const_cast<__tagField*>(static_cast<const CZuFieldSetObject*>(this)->Find(key));
}

const CZuFieldSetObject::__tagField* CZuFieldSetObject::FindByClass(
    const std::string& fieldClass) const {
  for (const __tagField& field : fields_) {
    if (field.fieldClass == fieldClass) return &field;
  }
  return nullptr;
}

void CZuFieldSetObject::SetField(const std::string& key, E_FIELD_OFST_TYPE type,
                                 const std::string& fieldClass, const QVariant& value) {
  CCriticalLockGuard guard(lock_.get());
  __tagField* field = Find(key);
  if (field == nullptr) {
    fields_.emplace_back();
    field = &fields_.back();
    field->key = key;
  }
  field->type = type;
  field->fieldClass = fieldClass;
  field->value = value;
  field->state = FIELD_STATE_CHANGED;
}

void CZuFieldSetObject::SetFieldValue(const std::string& key, E_FIELD_OFST_TYPE type,
                                      const QVariant& value) {
  CCriticalLockGuard guard(lock_.get());
  __tagField* field = Find(key);
  if (field == nullptr) {
    fields_.emplace_back();
    field = &fields_.back();
    field->key = key;
    field->type = type;
  }
  field->value = value;
  field->state = FIELD_STATE_CHANGED;
}

void CZuFieldSetObject::SetFieldClass(const std::string& key, const std::string& fieldClass) {
  CCriticalLockGuard guard(lock_.get());
  __tagField* field = Find(key);
  if (field == nullptr) {
    fields_.emplace_back();
    field = &fields_.back();
    field->key = key;
  }
  field->fieldClass = fieldClass;
  field->state = FIELD_STATE_CHANGED;
}

bool CZuFieldSetObject::GetField(QVariant& value, std::string& fieldClass,
                                 const std::string& key) const {
  CCriticalLockGuard guard(lock_.get());
  const __tagField* field = Find(key);
  if (field == nullptr) return false;
  value = field->value;
  fieldClass = field->fieldClass;
  return true;
}

bool CZuFieldSetObject::GetField(__tagField& out, const std::string& key) const {
  CCriticalLockGuard guard(lock_.get());
  const __tagField* field = Find(key);
  if (field == nullptr) return false;
  out = *field;
  return true;
}

E_FIELD_OFST_TYPE CZuFieldSetObject::GetFieldType(const std::string& key) const {
  CCriticalLockGuard guard(lock_.get());
  const __tagField* field = Find(key);
  return field != nullptr ? field->type : FIELD_OFST_TYPE_NONE;
}

QVariant CZuFieldSetObject::GetFieldValue(const std::string& key) const {
  CCriticalLockGuard guard(lock_.get());
  const __tagField* field = Find(key);
  return field != nullptr ? field->value : QVariant();
}

std::string CZuFieldSetObject::GetFieldClass(const std::string& key) const {
  CCriticalLockGuard guard(lock_.get());
  const __tagField* field = Find(key);
  return field != nullptr ? field->fieldClass : std::string();
}

std::string CZuFieldSetObject::GetFieldKeyByClass(const std::string& fieldClass) const {
  CCriticalLockGuard guard(lock_.get());
  const __tagField* field = FindByClass(fieldClass);
  return field != nullptr ? field->key : std::string();
}

QVariant CZuFieldSetObject::GetFieldValueByClass(const std::string& fieldClass) const {
  CCriticalLockGuard guard(lock_.get());
  const __tagField* field = FindByClass(fieldClass);
  return field != nullptr ? field->value : QVariant();
}

void CZuFieldSetObject::RemoveField(const std::string& key) {
  CCriticalLockGuard guard(lock_.get());
  __tagField* field = Find(key);
  if (field != nullptr) field->state = FIELD_STATE_REMOVED;
}

void CZuFieldSetObject::RemoveAllField() {
  CCriticalLockGuard guard(lock_.get());
  for (__tagField& field : fields_) field.state = FIELD_STATE_REMOVED;
}

void CZuFieldSetObject::Cleanup() {
  CCriticalLockGuard guard(lock_.get());
  fields_.clear();
}

void CZuFieldSetObject::ResetChange() {
  CCriticalLockGuard guard(lock_.get());
  fields_.erase(std::remove_if(fields_.begin(), fields_.end(),
                               [](const __tagField& f) { return f.state == FIELD_STATE_REMOVED; }),
                fields_.end());
  for (__tagField& field : fields_) field.state = FIELD_STATE_UNCHANGED;
}

bool CZuFieldSetObject::IsExistChange() const {
  CCriticalLockGuard guard(lock_.get());
  if (fields_.empty()) return false;
  // Nobody else can take the lock meanwhile, so an unchanged first field stays so: this is the
  // endless wait the interface promises. The pause keeps it from burning a core.
  while (fields_.front().state == FIELD_STATE_UNCHANGED) {
    std::this_thread::sleep_for(std::chrono::milliseconds(50));
  }
  return true;
}

bool CZuFieldSetObject::IsEmpty() const {
  CCriticalLockGuard guard(lock_.get());
  return fields_.empty();
}

int CZuFieldSetObject::Count() const {
  CCriticalLockGuard guard(lock_.get());
  return static_cast<int>(fields_.size());
}

void CZuFieldSetObject::TravelField(IFieldDataVisitor& visitor) const {
  CCriticalLockGuard guard(lock_.get());
  for (const __tagField& field : fields_) visitor.VisitField(field);
}
