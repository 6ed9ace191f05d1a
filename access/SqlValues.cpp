#include "access/SqlValues.h"

#include <cmath>

#include "access/General.h"
#include "access/NumberText.h"
#include "orvmysql/Error.h"

namespace orvmysql::sql {

const Variant& At(const FieldArray& fields, std::size_t i) {
  if (i >= fields.size()) ThrowRuntimeError(kErrSubscript);
  return fields[i];
}

void RequireSize(const FieldArray& fields, std::size_t n) {
  if (fields.size() < n) ThrowRuntimeError(kErrSubscript);
}

std::string Long(const Variant& v) {
  return std::to_string(v.ToLong());
}

std::string Double(const Variant& v) {
  const double d = v.ToDouble();
  if (!std::isfinite(d)) ThrowRuntimeError(kErrOverflow);
  std::string text = DoubleText(d);
  // A whole number has no decimal point; add one so the server reads every
  // value as an approximate number.
  if (text.find_first_of(".e") == std::string::npos) text += ".0";
  return text;
}

std::string Text(const Variant& v, bool limit255) {
  return "'" + GetQuotedString(v.ToText(), limit255) + "'";
}

std::string TextOrNull(const Variant& v, bool limit255) {
  if (v.IsNull()) return "NULL";
  std::string text = v.ToText();
  if (text.empty()) return "NULL";
  return "'" + GetQuotedString(text, limit255) + "'";
}

std::string TextOrEmpty(const Variant& v, bool limit255) {
  return "'" + GetQuotedString(v.IsNull() ? std::string() : v.ToText(), limit255) + "'";
}

std::string Number(const Variant& v) {
  if (v.IsNull()) return "NULL";
  if (v.IsText()) {
    if (!IsDecimalNumber(v.Text())) ThrowRuntimeError(kErrTypeMismatch, "'" + v.Text() + "'");
    const auto first = v.Text().find_first_not_of(" \t\r\n");
    return v.Text().substr(first, v.Text().find_last_not_of(" \t\r\n") - first + 1);
  }
  if (v.GetType() == Variant::Type::Long) return std::to_string(v.ToLong());
  const double d = v.ToDouble();
  if (!std::isfinite(d)) ThrowRuntimeError(kErrOverflow);
  return DoubleText(d);
}

std::string LongOrNull(const Variant& v) {
  return v.IsNull() ? "NULL" : Long(v);
}

std::string DateTime(const Variant& v) {
  return ConvertDateTimeIntoSQLFormat(v);
}
std::string DateOnly(const Variant& v) {
  return ConvertDateIntoSQLFormat(v);
}
std::string Time(const Variant& v) {
  return ConvertTimeIntoSQLFormat(v);
}
std::string Boolean(const Variant& v) {
  return ConvertBooleanIntoSQLFormat(v.ToBoolean());
}

ValueColumns ValueByType(const Variant& value, const Variant& data_type) {
  const int32_t type = data_type.ToLong();
  if (value.IsNull()) return {"NULL", "NULL"};
  std::string text = value.ToText();
  const auto first = text.find_first_not_of(' ');
  if (first == std::string::npos) return {"NULL", "NULL"};
  text = text.substr(first, text.find_last_not_of(' ') - first + 1);
  if (type == 1 || type == 6 || type == 7 || type == 8) return {Text(text, false), "NULL"};
  // A text is read as a person typed it; numbers, booleans and dates keep
  // their own value.
  const double number = value.IsText() ? LocaleNumber(text) : value.ToDouble();
  if (!std::isfinite(number)) ThrowRuntimeError(kErrOverflow);
  return {"NULL", DoubleText(number)};
}

}  // namespace orvmysql::sql
