// ADO constants the component keeps: data type numbers and field attributes.
// The numbers are ADO's own, because hosts and the field-description file
// identify field types by them.
#pragma once

namespace orvalis::ado {

enum DataType : int {
  adEmpty = 0,
  adSmallInt = 2,
  adInteger = 3,
  adSingle = 4,
  adDouble = 5,
  adCurrency = 6,
  adDate = 7,
  adBSTR = 8,
  adBoolean = 11,
  adVariant = 12,
  adDecimal = 14,
  adTinyInt = 16,
  adUnsignedTinyInt = 17,
  adBigInt = 20,
  adGUID = 72,
  adBinary = 128,
  adChar = 129,
  adWChar = 130,
  adNumeric = 131,
  adDBDate = 133,
  adDBTime = 134,
  adDBTimeStamp = 135,
  adVarNumeric = 139,
  adVarChar = 200,
  adLongVarChar = 201,
  adVarWChar = 202,
  adLongVarWChar = 203,
  adVarBinary = 204,
  adLongVarBinary = 205,
};

// True for the text types (fixed, variable, long, wide, GUID).
inline constexpr bool isTextType(int type) {
  switch (type) {
    case adBSTR:
    case adChar:
    case adWChar:
    case adVarChar:
    case adLongVarChar:
    case adVarWChar:
    case adLongVarWChar:
    case adGUID:
      return true;
    default:
      return false;
  }
}

// Field attributes (FieldAttributeEnum).
inline constexpr int adFldUpdatable = 0x4;
inline constexpr int adFldUnknownUpdatable = 0x8;
inline constexpr int adFldFixed = 0x10;
inline constexpr int adFldIsNullable = 0x20;
inline constexpr int adFldMayBeNull = 0x40;
inline constexpr int adFldLong = 0x80;

// What Fields.Append gives a field appended without attributes to a
// client-side recordset: nullable.
inline constexpr int kDefaultAttributes = adFldIsNullable | adFldMayBeNull;

}  // namespace orvalis::ado
