#include "reports/report_classes.h"

#include "reports/absence/absence.h"
#include "reports/addresses/addresses.h"
#include "reports/audit_data/audit_data.h"
#include "reports/check_lists/check_lists.h"
#include "reports/establishment/establishment.h"
#include "reports/femr/femr.h"
#include "reports/holidays/holidays.h"
#include "reports/post_review/post_review.h"
#include "reports/reporting_data/reporting_data.h"
#include "reports/sir_fe/sir_fe.h"
#include "reports/sir_he/sir_he.h"
#include "reports/training_costs/training_costs.h"

namespace orvalis {

namespace {

void registerInPublishedOrder() {
  reports::registerReportingData();
  reports::registerAbsence();
  reports::registerSIR_HE();
  reports::registerEstablishment();
  reports::registerPostReview();
  reports::registerSIR_FE();
  reports::registerTrainingCosts();
  reports::registerHolidays();
  reports::registerAddresses();
  reports::registerAuditData();
  reports::registerCheckLists();
  reports::registerFEMR();
}

}  // namespace

void registerReportClasses() {
  static const bool registered = (registerInPublishedOrder(), true);
  (void)registered;
}

}  // namespace orvalis
