// The class registry: the twelve creatable classes, their public methods
// and handlers, and creation by identifier.

#include "component/class_registry.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "runtime/error.h"

namespace orvalis {
namespace {

struct Published {
  std::string name;
  std::vector<std::string> methods;
  Handler handler;
};

const std::vector<Published> kPublished = {
    {"ReportingData", {"ExtractData"}, Handler::Block},
    {"Absence", {"ExtractData"}, Handler::ErrorComponent},
    {"SIR_HE", {"ExtractData", "ExtractStringData"}, Handler::Block},
    {"Establishment", {"ExtractData", "Thrensby"}, Handler::ErrorComponent},
    {"PostReview", {"ExtractData", "OpenObject"}, Handler::ErrorComponent},
    {"SIR_FE", {"ExtractData"}, Handler::Block},
    {"TrainingCosts", {"ExtractData"}, Handler::Block},
    {"Holidays", {"ExtractData"}, Handler::ErrorComponent},
    {"Addresses", {"ExtractData"}, Handler::Block},
    {"AuditData", {"ExtractData"}, Handler::Block},
    {"CheckLists", {"ExtractData"}, Handler::Block},
    {"FEMR", {"ExtractData"}, Handler::ErrorComponent},
};

TEST(ClassRegistry, PublishesTheTwelveClassesInOrder) {
  std::vector<ReportClassInfo> classes = reportClasses();
  ASSERT_EQ(classes.size(), kPublished.size());
  for (size_t i = 0; i < classes.size(); ++i) {
    EXPECT_EQ(classes[i].name, kPublished[i].name);
    EXPECT_EQ(classes[i].classId(), "ORVALIS." + kPublished[i].name);
    EXPECT_EQ(classes[i].methods, kPublished[i].methods) << classes[i].name;
  }
}

TEST(ClassRegistry, CreatesEachClassByIdentifierWithItsHandler) {
  for (const Published& p : kPublished) {
    std::unique_ptr<ReportClass> c = createReportClass("ORVALIS." + p.name);
    ASSERT_NE(c, nullptr) << p.name;
    EXPECT_EQ(c->className(), p.name);
    EXPECT_EQ(c->classId(), "ORVALIS." + p.name);
    EXPECT_EQ(c->handler(), p.handler) << p.name;
  }
}

TEST(ClassRegistry, IdentifiersCompareWithoutCaseAndNeedThePrefix) {
  EXPECT_NE(createReportClass("orvalis.absence"), nullptr);
  EXPECT_NE(createReportClass(" ORVALIS.FEMR "), nullptr);
  EXPECT_EQ(createReportClass("Absence"), nullptr);
  EXPECT_EQ(createReportClass("ORVALIS.Payslips"), nullptr);
  EXPECT_EQ(createReportClass(""), nullptr);
  try {
    requireReportClass("ORVALIS.Payslips");
    FAIL();
  } catch (const Error& e) {
    EXPECT_EQ(e.number(), err::kClassNotRegistered);
  }
}

}  // namespace
}  // namespace orvalis
