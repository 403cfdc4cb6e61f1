// The published report classes: the twelve in their order, with their
// public methods and handlers, each created by its identifier.

#include "reports/report_classes.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "component/class_registry.h"

namespace orvalis {
namespace {

struct Published {
  std::string name;
  std::vector<std::string> methods;
  Handler handler;
};

// The component's published list: the one place the tests spell it out.
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

class ReportClasses : public ::testing::Test {
 protected:
  void SetUp() override {
    registerReportClasses();
    registerReportClasses();  // a second call changes nothing
  }
};

TEST_F(ReportClasses, PublishesTheTwelveClassesInOrder) {
  std::vector<ReportClassInfo> classes = reportClasses();
  ASSERT_EQ(classes.size(), kPublished.size());
  for (size_t i = 0; i < classes.size(); ++i) {
    EXPECT_EQ(classes[i].name, kPublished[i].name);
    EXPECT_EQ(classes[i].classId(), "ORVALIS." + kPublished[i].name);
    EXPECT_EQ(classes[i].methods, kPublished[i].methods) << classes[i].name;
    EXPECT_EQ(classes[i].handler, kPublished[i].handler) << classes[i].name;
  }
}

TEST_F(ReportClasses, CreatesEachClassByIdentifierWithItsHandler) {
  for (const Published& p : kPublished) {
    std::unique_ptr<ReportClass> c = createReportClass("ORVALIS." + p.name);
    ASSERT_NE(c, nullptr) << p.name;
    EXPECT_EQ(c->className(), p.name);
    EXPECT_EQ(c->classId(), "ORVALIS." + p.name);
    EXPECT_EQ(c->handler(), p.handler) << p.name;
    // ExtractStringData is published exactly by the classes that have it.
    const bool strings = dynamic_cast<StringExtract*>(c.get()) != nullptr;
    EXPECT_EQ(strings, std::find(p.methods.begin(), p.methods.end(), "ExtractStringData") != p.methods.end())
        << p.name;
  }
}

}  // namespace
}  // namespace orvalis
