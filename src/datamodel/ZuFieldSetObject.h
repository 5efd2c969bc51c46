// CZuFieldSetObject holds the attribute fields (or the user data) of one node: an ordered list of
// named, typed values, each with a change state, so that callers edit fields in memory and the
// data model later writes only what changed.
//
// Keys are unique and compared byte for byte. Removing only marks a field (state 2); the field
// stays visible to every getter until ResetChange erases it.
//
// Thread safety: every operation takes the set's recursive lock for its whole run, so one set may
// be used from several threads. TravelField holds the lock while the visitor runs, so a visitor
// must not call back into the same set. A copy shares the lock of its source
// (the lock is shared-owned, so either may die first). Assigning to a set while other threads use
// that same set is not supported, since assignment replaces the lock it is guarded by.
#ifndef ANNOTATIONLAYER_ZU_FIELD_SET_OBJECT_H
#define ANNOTATIONLAYER_ZU_FIELD_SET_OBJECT_H

#include <QVariant>

#include <memory>
#include <string>
#include <vector>

#include "AnnotationLayerExport.h"
#include "AnnotationLayerTypes.h"

class CCriticalLock;

class ANNOTATIONLAYER_EXPORT CZuFieldSetObject {
 public:
  // Change state of a field.
  enum E_FIELD_STATE : int {
    FIELD_STATE_UNCHANGED = 0,
    FIELD_STATE_CHANGED = 1,  // set or changed since the last ResetChange
    FIELD_STATE_REMOVED = 2,  // kept in the list until ResetChange
  };

  struct __tagField {
    std::string key;
    E_FIELD_OFST_TYPE type = FIELD_OFST_TYPE_NONE;
    std::string fieldClass;  // free classification; may be empty
    QVariant value;
    int state = FIELD_STATE_UNCHANGED;
  };

  class ANNOTATIONLAYER_EXPORT IFieldDataVisitor {
   public:
    virtual ~IFieldDataVisitor();
    virtual void VisitField(const __tagField& field) = 0;
  };

  CZuFieldSetObject();
  CZuFieldSetObject(const CZuFieldSetObject& other);
  CZuFieldSetObject& operator=(const CZuFieldSetObject& other);
  ~CZuFieldSetObject();

  // Replaces every member of an existing field, or appends a new one; the field becomes changed.
  void SetField(const std::string& key, E_FIELD_OFST_TYPE type, const std::string& fieldClass,
                const QVariant& value);
  // Replaces the value of an existing field, keeping its type and class (`type` is then ignored),
  // or appends a new field without class; the field becomes changed.
  void SetFieldValue(const std::string& key, E_FIELD_OFST_TYPE type, const QVariant& value);
  // Replaces the class of an existing field, or appends a field of type none with an invalid
  // value; the field becomes changed.
  void SetFieldClass(const std::string& key, const std::string& fieldClass);

  // False when the key is absent; otherwise copies out the value and class.
  bool GetField(QVariant& value, std::string& fieldClass, const std::string& key) const;
  // False when the key is absent; otherwise copies out the whole field, state included.
  bool GetField(__tagField& field, const std::string& key) const;
  // FIELD_OFST_TYPE_NONE when absent.
  E_FIELD_OFST_TYPE GetFieldType(const std::string& key) const;
  // An invalid QVariant when absent.
  QVariant GetFieldValue(const std::string& key) const;
  // Empty when absent.
  std::string GetFieldClass(const std::string& key) const;
  // The key or value of the first field of the class, empty/invalid when there is none.
  std::string GetFieldKeyByClass(const std::string& fieldClass) const;
  QVariant GetFieldValueByClass(const std::string& fieldClass) const;

  // Mark fields removed; they stay in the list until ResetChange.
  void RemoveField(const std::string& key);
  void RemoveAllField();
  // Erases every field at once, whatever its state.
  void Cleanup();
  // Erases removed fields and marks all others unchanged, keeping their order.
  void ResetChange();

  // Looks at the first field only: false for an empty set, true when its state is not unchanged.
  // When the first field is unchanged the call never returns: it waits on that state for ever
  // with the lock held, so nothing else can get at the set either. Callers rely on only asking
  // after a change.
  bool IsExistChange() const;
  // Removed fields count as present in both.
  bool IsEmpty() const;
  int Count() const;

  // Calls the visitor for every field in order, removed ones included.
  void TravelField(IFieldDataVisitor& visitor) const;

 private:
  // Call with the lock held.
  const __tagField* Find(const std::string& key) const;
  __tagField* Find(const std::string& key);
  const __tagField* FindByClass(const std::string& fieldClass) const;

  std::shared_ptr<CCriticalLock> lock_;
  std::vector<__tagField> fields_;
};

#endif  // ANNOTATIONLAYER_ZU_FIELD_SET_OBJECT_H
