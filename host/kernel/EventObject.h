// Events that travel through the host's event kernel.
//
// CEventObject is the base: a type and the id of the sender. CStateEventObject reports a change of
// state: a state type, an event code and the current value. Events are plain values; the sender
// owns them and the kernel passes them to observers by pointer for the duration of the dispatch.
#ifndef ZU_EVENT_OBJECT_H
#define ZU_EVENT_OBJECT_H

#include <QVariant>

#include "ZuExport.h"

class ZU_EXPORT CEventObject {
 public:
  enum { kStateEvent = 1 };

  CEventObject(int eventType, int senderId) : eventType_(eventType), senderId_(senderId) {}
  virtual ~CEventObject() = default;

  int GetEventType() const { return eventType_; }
  int GetSenderID() const { return senderId_; }

 private:
  int eventType_;
  int senderId_;
};

class ZU_EXPORT CStateEventObject : public CEventObject {
 public:
  CStateEventObject(int stateType, int senderId, int eventCode, const QVariant& value)
      : CEventObject(kStateEvent, senderId), stateType_(stateType), eventCode_(eventCode),
        value_(value) {}

  int GetStateType() const { return stateType_; }
  int GetEventCode() const { return eventCode_; }
  const QVariant& GetCurrentState() const { return value_; }

 private:
  int stateType_;
  int eventCode_;
  QVariant value_;
};

#endif  // ZU_EVENT_OBJECT_H
