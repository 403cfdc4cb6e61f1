// The result layouts of the Absence report: the listing's 31 fields and the
// employee review's fields, with their ADO types and defined sizes, and the
// cutting of a text to its field's size.
//
// Constant tables and a pure function; thread-safe.
#pragma once

#include <string_view>

#include "reports/shared/query_driving.h"
#include "runtime/ado.h"

namespace orvalis::reports::absence {

inline constexpr ResultField kListingFields[] = {
    {"EMP_ID", ado::adChar, 10},          {"SURNAME", ado::adChar, 40},
    {"FORENAME", ado::adChar, 40},        {"DEPARTMENT", ado::adChar, 40},
    {"ALL_OR_ABS", ado::adChar, 40},      {"DESCRIPTION", ado::adChar, 40},
    {"TYPE_ID", ado::adChar, 40},         {"ABSENT_ID", ado::adChar, 40},
    {"START_DATE", ado::adDate, 12},      {"START_TIME", ado::adChar, 12},
    {"END_DATE", ado::adDate, 12},        {"END_TIME", ado::adChar, 12},
    {"DAYS", ado::adDouble, 15},          {"POST_REFERENCE", ado::adChar, 10},
    {"POST_SUMMARY", ado::adChar, 40},    {"START_ACT_TIME", ado::adChar, 12},
    {"END_ACT_TIME", ado::adChar, 12},    {"ACTION_ID", ado::adChar, 40},
    {"REVIEW_DATE", ado::adDate, 12},     {"START_DAY_OF_WEEK", ado::adChar, 10},
    {"PRV_DAY_NON_WORK", ado::adChar, 10}, {"NXT_DAY_NON_WORK", ado::adChar, 10},
    {"DUR_HOURS", ado::adDouble, 15},     {"CERTIFIED", ado::adChar, 1},
    {"CERT_METHOD_ID", ado::adChar, 40},  {"EXPIRY_DATE", ado::adDate, 12},
    {"END_DAY_OF_WEEK", ado::adChar, 10}, {"DUR_CAL_DAYS", ado::adDouble, 15},
    {"PNL_CAT_ID", ado::adChar, 40},      {"SEQ_ID", ado::adChar, 10},
    {"DURATION", ado::adDouble, 15},
};

inline constexpr ResultField kReviewFields[] = {
    {"EMP_ID", ado::adChar, 10},       {"SURNAME", ado::adChar, 40},     {"FORENAME", ado::adChar, 40},
    {"KNOWNAS", ado::adChar, 40},      {"DEPARTMENT", ado::adChar, 40},  {"ABS_PERIODS", ado::adInteger, 10},
    {"ABS_DURATION", ado::adDouble, 15}, {"ABS_SCORE", ado::adDouble, 15}, {"SCORE_BAND", ado::adChar, 40},
};


}  // namespace orvalis::reports::absence
