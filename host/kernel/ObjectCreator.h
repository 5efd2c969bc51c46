// The host's object creator: makes objects by class name through registered factories ("agents").
//
// A library registers an agent per class at start-up and unregisters it before it unloads. The
// creator does not own the agents: the registering library keeps each one alive while registered.
//
// Thread safety: all operations lock an internal mutex; CreateObject runs the agent outside it.
#ifndef ZU_OBJECT_CREATOR_H
#define ZU_OBJECT_CREATOR_H

#include <map>
#include <mutex>
#include <string>

#include "IObject.h"
#include "ZuExport.h"

// A factory for one class.
class ZU_EXPORT CObjectRegisterAgent {
 public:
  virtual ~CObjectRegisterAgent() = default;
  // Returns a new object owned by the caller, or null.
  virtual IObject* CreateObject() = 0;
};

// The factory for class T, which must derive from IObject and be default-constructible.
template <typename T>
class CObjectRegisterAgentT : public CObjectRegisterAgent {
 public:
  IObject* CreateObject() override { return new T(); }
};

class ZU_EXPORT CObjectCreator {
 public:
  CObjectCreator() = default;
  CObjectCreator(const CObjectCreator&) = delete;
  CObjectCreator& operator=(const CObjectCreator&) = delete;

  // Registers `agent` under `key`. False when the key is empty, the agent null, or the key taken.
  bool RegisterType(const std::string& key, CObjectRegisterAgent* agent);
  // Removes the key; false when it was not registered.
  bool UnregisterType(const std::string& key);
  bool IsRegistered(const std::string& key) const;
  // A new object of the class registered under `key`, owned by the caller; null when unknown.
  IObject* CreateObject(const std::string& key);

 private:
  mutable std::mutex mutex_;
  std::map<std::string, CObjectRegisterAgent*> agents_;
};

class ZU_EXPORT CObjectCreatorSingleton {
 public:
  static CObjectCreator* GetInstance();
};

#endif  // ZU_OBJECT_CREATOR_H
