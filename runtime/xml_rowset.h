// Recordsets saved as ADO's persisted XML rowset (Recordset.Save with
// adPersistXML), the text the host reads from ExtractStringData and the
// command-line tool's XML output.
//
// The document is UTF-8 without an XML declaration, attributes in single
// quotes, indented with tabs:
//
//   <xml xmlns:s='uuid:BDC6E3F0-...' xmlns:dt='uuid:C2F41010-...'
//        xmlns:rs='urn:schemas-microsoft-com:rowset' xmlns:z='#RowsetSchema'>
//     <s:Schema id='RowsetSchema'>
//       <s:ElementType name='row' content='eltOnly'>
//         <s:AttributeType name='EMP_ID' rs:number='1' rs:nullable='true'
//                          rs:writeunknown='true'>
//           <s:datatype dt:type='string' rs:dbtype='str' dt:maxLength='10'
//                       rs:fixedlength='true'/>
//         </s:AttributeType>
//         ...
//         <s:extends type='rs:rowbase'/>
//       </s:ElementType>
//     </s:Schema>
//     <rs:data>
//       <z:row EMP_ID='E001' .../>
//     </rs:data>
//   </xml>
//
// One s:AttributeType per field in field order (rs:number from 1), with the
// ADO type's dt:type, rs:dbtype, dt:maxLength, precision, scale and
// fixed-length marks; one z:row per visible row (the filter and sort in
// force decide which rows and in what order, as ADO saves them). A Null
// value's attribute is left out; an empty text is written FIELD=''. Values:
// texts as they stand, numbers in the shortest form that reads back to the
// same value, Booleans 'True'/'False', dates 'YYYY-MM-DDTHH:MM:SS' (DBDate
// 'YYYY-MM-DD', DBTime 'HH:MM:SS'), binary values in hexadecimal.
//
// A field name that is not a valid XML attribute name (a blank, a leading
// digit, a colon, a name beginning with "xml", a repeated name) is written
// under an alias "c<index>" with the real name in rs:name, as ADO does; the
// rows use the alias. Characters XML 1.0 cannot hold (control characters
// other than tab, line feed and carriage return) become U+FFFD, and bytes
// that are not UTF-8 are read as Latin-1, so the document always parses.
//
// Rows are written one at a time, so saving a large recordset needs no more
// memory than one row's document. Free functions; a recordset with a filter
// or sort in force is copied to walk it. Thread-compatible.
#pragma once

#include <ostream>
#include <string>
#include <string_view>

#include "runtime/recordset.h"

namespace orvalis {

// Writes rs as a persisted XML rowset. An empty recordset still gives a
// whole document whose data section is empty (<rs:data/>); an unopened one
// gives its schema (the fields appended so far) and no rows.
void saveRecordsetAsXml(const Recordset& rs, std::ostream& out);
std::string saveRecordsetAsXml(const Recordset& rs);

// The text a recordset-to-XML conversion hands to a caller that treats "no
// rows" as "no document" (ExtractStringData): "" for an unopened recordset
// or one without visible rows, otherwise saveRecordsetAsXml(rs).
std::string recordsetXmlText(const Recordset& rs);

// The value as a persisted rowset writes it for a field of this ADO type
// (the Null and Empty values have no text: callers leave them out).
std::string xmlRowsetValueText(const Value& value, int adoType);

// Whether name can stand as an attribute name in the data section (an XML
// NCName not beginning with "xml"); otherwise the field is written under an
// alias.
bool isXmlRowsetName(std::string_view name);

// Text every XML parser accepts: characters XML 1.0 does not allow (the
// control characters other than tab, line feed and carriage return, U+FFFE,
// U+FFFF) become U+FFFD, and bytes that are not UTF-8 are read as Latin-1.
// The spreadsheet writer uses the same rule.
std::string xmlSafeText(std::string_view s);

// The namespaces of the document element.
inline constexpr const char* kXmlRowsetSchemaNs = "uuid:BDC6E3F0-6DA3-11d1-A2A3-00AA00C14882";
inline constexpr const char* kXmlRowsetDataTypeNs = "uuid:C2F41010-65B3-11d1-A29F-00AA00C14882";
inline constexpr const char* kXmlRowsetNs = "urn:schemas-microsoft-com:rowset";
inline constexpr const char* kXmlRowsetRowNs = "#RowsetSchema";

}  // namespace orvalis
