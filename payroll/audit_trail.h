// The audit trail writer: one ADMAUDIT row per change made to HR data.
//
// gsubAudit takes the change as a keyed text (runtime/keyed_text.h) with
// the keys VARIATION_ID, USER_ID, ENTITY_ID, MODULE_ID, FIELD_ID, ITEM_ID,
// ORIG_SEQ_ID, KEY_ID, ACTION, DATA, WAS, TIME (and TEMPLATE_ID, see
// below) and writes one row with a single INSERT, columns in this order:
//   VARIATION_ID  VARIATION_ID, else the session's company
//   USER_ID       USER_ID, else the session's user
//   U_VERSION     the component's version text (kVersionText)
//   AUD_DATE      today (clock::now()) as a database date
//   AUD_TIME      TIME as given, else the present time "HH:MM:SS"
//   SEQ_ID        the next "AUDITSEQID" number of module "ADM"
//   ENTITY_ID     ENTITY_ID, the table changed
//   MODULE_ID     MODULE_ID, else the first three letters of the table
//   FIELD_ID      FIELD_ID, the column changed
//   KEY_ID        KEY_ID, else the session's employee
//   AUD_ACTION    auditActionCode(ACTION): "IN", "AM" or "DT"
//   AUD_DATA      DATA, the new value;  AUD_WAS  WAS, the old value
//   ORIG_SEQ_ID   ORIG_SEQ_ID, Null when not given
//   ITEM_ID       ITEM_ID, Null when not given
// Texts longer than their column are cut to it: the row is never lost for
// an over-long value. The number and the row are written in one
// transaction (data/write_transaction.h; joined when the caller has one
// open, as the control-parameter writer does), so concurrent writers never
// share a SEQ_ID and a failed write leaves neither row nor number.
//
// Pay audit. A change is payroll-relevant when
//   - the column is one the payroll reads (isPayrollColumn), and
//   - the company runs payroll: ADM "APPMODPAY" is yes (flag rules, so an
//     unset parameter counts as yes), and
//   - the key is an employee on a payroll template: TEMPLATE_ID of the data
//     text, else the employee's PNLEMPMST.TEMPLATE_ID, is not empty.
// Then, in the same transaction, the earlier pay audit of the same item
// (company, MODULE_ID "PAY", table, column, key) is deleted, a second row
// is written as above with MODULE_ID "PAY" and its own number, and the
// employee's DATE_CALC is cleared so the payroll calculates them again.
// The pay audit consults no other payroll setting.
//
// On return the data text holds the values written (defaults filled) and
// SEQ_ID (and PAY_SEQ_ID for a pay audit). Errors go to the error component
// (module "HRAuditFunctions"); an error inside a caller's transaction marks
// it failed, so the caller's change is not stored without its audit row.
//
// Reads the session through HREnvironment; per thread, like the host.
#pragma once

#include <string>
#include <string_view>

namespace orvalis::payroll {

void gsubAudit(std::string& strData);

// The stored action code of an ACTION text: its first letter (any case)
// "A" gives "AM", "D" gives "DT", anything else, empty included, "IN".
std::string auditActionCode(std::string_view action);

// Whether a change of table.column is one the payroll reads: every column
// of PNLEMPPEN and PAYINPDET; STATUS_ID, SALARY, WK1_FLAG, NI_DETAILS,
// NI_CAT, PAY_CAT_ID, DATE_START, DATE_LEFT, STD_HOURS, WEEKS_PER_YEAR,
// DIR_ID, NI_DIR_PERIOD, NI_DIR_EARNINGS, HOL_CR, RECLAIM_SL,
// SL_START_DATE, SL_END_DATE, SSP_DEDUCT, columns beginning "TAX_" and
// columns ending "_AMT" of any other table. Names compare trimmed and
// upper-cased.
bool isPayrollColumn(std::string_view table, std::string_view column);

// Makes the control-parameter writer record through gsubAudit. Runs by
// itself when this file is linked; callable again at no cost.
void installAuditTrail();

}  // namespace orvalis::payroll
