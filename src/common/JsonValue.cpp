#include "JsonValue.h"

#include <cmath>
#include <exception>
#include <limits>
#include <memory>

namespace {

// Truncates `d` into [low, high], or gives false when it falls outside (NaN included).
template <typename T>
bool TruncateInto(double d, T& out) {
  // Both bounds are exact doubles: -2^31 / 2^31 and -2^63 / 2^63.
  const double low = static_cast<double>(std::numeric_limits<T>::min());
  const double highExclusive = -low;
  if (!(d >= low && d < highExclusive)) return false;
  out = static_cast<T>(d);
  return true;
}

template <typename T>
T ReadInteger(const Json::Value& v) {
  T result = 0;
  switch (v.type()) {
    case Json::intValue: {
      const Json::Int64 i = v.asInt64();
      if (i >= std::numeric_limits<T>::min() && i <= std::numeric_limits<T>::max()) {
        result = static_cast<T>(i);
      }
      return result;
    }
    case Json::uintValue: {
      const Json::UInt64 u = v.asUInt64();
      if (u <= static_cast<Json::UInt64>(std::numeric_limits<T>::max())) result = static_cast<T>(u);
      return result;
    }
    case Json::realValue:
      return TruncateInto(v.asDouble(), result) ? result : 0;
    case Json::booleanValue:
      return v.asBool() ? 1 : 0;
    default:
      return 0;
  }
}

}  // namespace

CJsonValue::CJsonValue() = default;

CJsonValue::CJsonValue(int value) : value_(value) {}

CJsonValue::CJsonValue(unsigned int value) : value_(value) {}

CJsonValue::CJsonValue(int64_t value) : value_(static_cast<Json::Int64>(value)) {}

CJsonValue::CJsonValue(double value) : value_(value) {}

CJsonValue::CJsonValue(const std::string& text) : value_(text) {}

CJsonValue::CJsonValue(const Json::Value& value) : value_(value) {}

bool CJsonValue::IsNull() const { return value_.isNull(); }

bool CJsonValue::IsObject() const { return value_.isObject(); }

bool CJsonValue::HasMember(const std::string& key) const {
  return value_.isObject() && value_.find(key.data(), key.data() + key.size()) != nullptr;
}

CJsonValue CJsonValue::Get(const std::string& key) const {
  if (!value_.isObject()) return CJsonValue();
  const Json::Value* member = value_.find(key.data(), key.data() + key.size());
  return member != nullptr ? CJsonValue(*member) : CJsonValue();
}

bool CJsonValue::Set(const std::string& key, const CJsonValue& value) {
  if (!value_.isNull() && !value_.isObject()) return false;
  value_[key] = value.value_;
  return true;
}

int CJsonValue::AsInt() const { return ReadInteger<int>(value_); }

int64_t CJsonValue::AsInt64() const { return ReadInteger<int64_t>(value_); }

double CJsonValue::AsDouble() const {
  switch (value_.type()) {
    case Json::intValue:
    case Json::uintValue:
    case Json::realValue:
      return value_.asDouble();
    case Json::booleanValue:
      return value_.asBool() ? 1.0 : 0.0;
    default:
      return 0.0;
  }
}

bool CJsonValue::AsBool() const {
  switch (value_.type()) {
    case Json::booleanValue:
      return value_.asBool();
    case Json::intValue:
      return value_.asInt64() != 0;
    case Json::uintValue:
      return value_.asUInt64() != 0;
    case Json::realValue:
      return value_.asDouble() != 0.0;
    default:
      return false;
  }
}

std::string CJsonValue::AsString() const {
  return value_.isString() ? value_.asString() : std::string();
}

std::string CJsonValue::Write() const {
  Json::StreamWriterBuilder builder;
  builder["indentation"] = "";
  // Texts are local code page bytes, not UTF-8: write them through instead of decoding them.
  builder["emitUTF8"] = true;
  // Numbers that overflowed to infinity (or NaN) are written as Infinity / NaN, which Parse reads
  // back; the default form (1e+9999) would make the whole text unreadable.
  builder["useSpecialFloats"] = true;
  return Json::writeString(builder, value_);
}

bool CJsonValue::Parse(const std::string& text, CJsonValue& out, std::string* error) {
  Json::CharReaderBuilder builder;
  builder["failIfExtra"] = true;
  builder["allowSpecialFloats"] = true;
  Json::Value root;
  std::string errors;
  bool ok = false;
  try {
    const std::unique_ptr<Json::CharReader> reader(builder.newCharReader());
    ok = reader->parse(text.data(), text.data() + text.size(), &root, &errors);
  } catch (const std::exception& e) {
    // jsoncpp throws instead of reporting for some inputs, e.g. nesting deeper than its limit.
    ok = false;
    errors = e.what();
  }
  if (!ok) {
    if (error != nullptr) *error = errors;
    return false;
  }
  out.value_ = std::move(root);
  return true;
}
