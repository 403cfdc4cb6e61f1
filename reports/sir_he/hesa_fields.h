// The fixed texts of the HESA staff record check: the tables and column
// lists under test, the result layout and the defect messages.
//
// The column lists are the component's own and are checked in this order;
// the Person list is read with EMP_ID in front, the Contract list with
// SEQ_ID in front. Constants only; thread-safe.
#pragma once

#include "reports/shared/query_driving.h"
#include "runtime/ado.h"

namespace orvalis::reports::hesa {

inline constexpr const char* kPersonTable = "PNLEMPHESAP";
inline constexpr const char* kContractTable = "PNLEMPHESAC";
inline constexpr const char* kMasterTable = "PNLEMPMST";

inline constexpr const char* kPersonColumns =
    "SEXORT,ETHNIC,NATION,NATIOND,NATIOND_2,DISABLE,RELBLF,PARLEAVE,ABLWELSH,ACTCHQUAL,"
    "ACTCHQUAL_2,ACTCHQUAL_3,ACTCHQUAL_4,ACTCHQUAL_5,ACTCHQUAL_6,REGBODY,REGBODY_2,HQHELD,"
    "CURACCDIS,CURACCDIS_2,ECRSTAT,RESAST,CLINARD,PREVEMP,PREVHEI,DATEFHEI,DATELEFT,ACTLEAVE,"
    "LOCLEAVE";
inline constexpr const char* kContractColumns =
    "CONTID,CAMPID,TERMS,MOEMP,ACEMPFUN,CONFTE,TCHWLH,HEIJOINT,STARTCON,ENDCON,LEVELS,RESCON,"
    "SOBS,SOBS_2,SOBS_3,PSCAG,SPOINT,SALREF,NHSCON,NHSCONGR,HSPEC,HSPEC_2,HSPEC_3,CLINICAL,"
    "CLINSUB,CLINSUB_2,CLINSUB_3,ACTSOC,CCENTRE,CCPROP,ACTSOC_2,CCENTRE_2,CCPROP_2,ACTSOC_3,"
    "CCENTRE_3,CCPROP_3";

// The report name every accepted extract name becomes.
inline constexpr const char* kReportName = "SIR_DATA";
// The name under which the base loop asks fncValidRecord.
inline constexpr const char* kValidatedName = "SIR_HE";

// Result fields, in order, all adChar of fixed length.
inline constexpr ResultField kResultFields[] = {
    {"REPORT_ID", ado::adChar, 20},  {"EMP_ID", ado::adChar, 10},     {"KNOWNAS", ado::adChar, 40},
    {"RECORD_TYPE", ado::adChar, 40}, {"FIELD_ID", ado::adChar, 40},  {"FIELD_DESC", ado::adChar, 40},
    {"VALUE", ado::adChar, 40},       {"ERROR", ado::adChar, 40},
};
enum ResultColumn { kReportId, kEmpId, kKnownAs, kRecordType, kFieldId, kFieldDesc, kValue, kError };

inline constexpr const char* kPersonRecord = "Person";
inline constexpr const char* kContractRecord = "Contract";
inline constexpr const char* kContractPrefix = "Contract - ";

inline constexpr const char* kFieldIsEmpty = "Field is empty";
inline constexpr const char* kInvalidValue = "Invalid value";
inline constexpr const char* kNoPersonRecord = "Employee has no Person record.";
inline constexpr const char* kNoContractRecords = "Employee has no Contract records.";

// Label keys of the master-record checks.
inline constexpr const char* kBirthDateLabel = "PNLEMPMST.DATE_BIRTH";
inline constexpr const char* kGenderLabel = "PNLEMPMST.SEX_ID";
inline constexpr const char* kStaffIdLabel = "PNLEMPHESAC.STAFF_ID";

}  // namespace orvalis::reports::hesa
