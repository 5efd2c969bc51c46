#include "ObjectCreator.h"

bool CObjectCreator::RegisterType(const std::string& key, CObjectRegisterAgent* agent) {
  if (key.empty() || agent == nullptr) return false;
  std::lock_guard<std::mutex> guard(mutex_);
  return agents_.emplace(key, agent).second;
}

bool CObjectCreator::UnregisterType(const std::string& key) {
  std::lock_guard<std::mutex> guard(mutex_);
  return agents_.erase(key) > 0;
}

bool CObjectCreator::IsRegistered(const std::string& key) const {
  std::lock_guard<std::mutex> guard(mutex_);
  return agents_.count(key) > 0;
}

IObject* CObjectCreator::CreateObject(const std::string& key) {
  CObjectRegisterAgent* agent = nullptr;
  {
    std::lock_guard<std::mutex> guard(mutex_);
    auto it = agents_.find(key);
    if (it == agents_.end()) return nullptr;
    agent = it->second;
  }
  return agent->CreateObject();
}

CObjectCreator* CObjectCreatorSingleton::GetInstance() {
  static CObjectCreator instance;
  return &instance;
}
