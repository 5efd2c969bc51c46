// CJsonValue is the module's internal value wrapper over a jsoncpp value: build objects of
// numbers and texts, read members back without ever throwing, and convert to and from compact
// JSON text.
//
// Readers are lenient in one direction only: numbers convert among themselves and booleans read
// as 0/1, as jsoncpp does; everything else (an absent member, a text read as a number, a number
// read as text, a number outside the target range, an array or object) reads as 0, 0.0, false or
// the empty text. Texts are bytes and are carried unchanged, so local code page text survives a
// round trip through Write and Parse.
//
// Thread safety: a plain value; callers synchronise access to one object themselves.
#ifndef ANNOTATIONLAYER_JSON_VALUE_H
#define ANNOTATIONLAYER_JSON_VALUE_H

#include <json/json.h>

#include <cstdint>
#include <string>

class CJsonValue {
 public:
  // A null value; Set turns it into an object.
  CJsonValue();
  explicit CJsonValue(int value);
  explicit CJsonValue(unsigned int value);
  explicit CJsonValue(int64_t value);
  explicit CJsonValue(double value);
  explicit CJsonValue(const std::string& text);
  explicit CJsonValue(const Json::Value& value);

  bool IsNull() const;
  bool IsObject() const;
  bool HasMember(const std::string& key) const;
  // The member `key`, or a null value when it is absent or this is not an object.
  CJsonValue Get(const std::string& key) const;
  // Sets the member `key`; a null value becomes an object first. False (nothing changed) when
  // this value is neither null nor an object.
  bool Set(const std::string& key, const CJsonValue& value);

  int AsInt() const;          // numbers in range, truncated toward zero
  int64_t AsInt64() const;    // numbers in range, truncated toward zero
  double AsDouble() const;
  bool AsBool() const;        // booleans; numbers are true when not zero
  std::string AsString() const;

  // The value as JSON text without any whitespace.
  std::string Write() const;
  // Parses a whole text (trailing whitespace allowed). On failure returns false, leaves `out`
  // unchanged and, when `error` is given, describes the failure there.
  static bool Parse(const std::string& text, CJsonValue& out, std::string* error = nullptr);

  const Json::Value& Raw() const { return value_; }

 private:
  Json::Value value_;
};

#endif  // ANNOTATIONLAYER_JSON_VALUE_H
