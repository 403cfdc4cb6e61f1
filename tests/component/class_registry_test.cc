// The class registry on its own: what it is given is what it publishes and
// creates, identifiers compare without case and need the prefix.

#include "component/class_registry.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "runtime/error.h"

namespace orvalis {
namespace {

class Probe final : public ReportClass {
 public:
  explicit Probe(const ReportClassInfo& info) : ReportClass(info) {}

 protected:
  bool recognises(const std::string&) const override { return false; }
};

ReportClassInfo probeInfo(std::string name, Handler handler, std::vector<std::string> methods) {
  ReportClassInfo info{std::move(name), std::move(methods), handler, nullptr};
  info.create = [info] { return std::make_unique<Probe>(info); };
  return info;
}

std::vector<std::string> names() {
  std::vector<std::string> out;
  for (const ReportClassInfo& info : reportClasses()) out.push_back(info.name);
  return out;
}

TEST(ClassRegistry, PublishesAndCreatesWhatItIsGiven) {
  registerReportClass(probeInfo("RegistryProbeA", Handler::Block, {"ExtractData"}));
  registerReportClass(probeInfo("RegistryProbeB", Handler::ErrorComponent, {"ExtractData", "Other"}));
  std::vector<std::string> listed = names();
  auto a = std::find(listed.begin(), listed.end(), "RegistryProbeA");
  ASSERT_NE(a, listed.end());
  ASSERT_NE(a + 1, listed.end());
  EXPECT_EQ(a[1], "RegistryProbeB");

  std::unique_ptr<ReportClass> b = createReportClass("ORVALIS.RegistryProbeB");
  ASSERT_NE(b, nullptr);
  EXPECT_EQ(b->className(), "RegistryProbeB");
  EXPECT_EQ(b->classId(), "ORVALIS.RegistryProbeB");
  EXPECT_EQ(b->handler(), Handler::ErrorComponent);
  EXPECT_NE(createReportClass("ORVALIS.RegistryProbeB"), b) << "a fresh instance each time";
  EXPECT_EQ(findRegisteredClass("ORVALIS.RegistryProbeB")->methods,
            (std::vector<std::string>{"ExtractData", "Other"}));

  // A second registration replaces the first in its place.
  registerReportClass(probeInfo("RegistryProbeA", Handler::ErrorComponent, {"ExtractData"}));
  EXPECT_EQ(names(), listed);
  EXPECT_EQ(requireReportClass("ORVALIS.RegistryProbeA")->handler(), Handler::ErrorComponent);
}

TEST(ClassRegistry, IdentifiersCompareWithoutCaseAndNeedThePrefix) {
  registerReportClass(probeInfo("RegistryProbeC", Handler::Block, {"ExtractData"}));
  EXPECT_NE(createReportClass("orvalis.registryprobec"), nullptr);
  EXPECT_NE(createReportClass(" ORVALIS.REGISTRYPROBEC "), nullptr);
  EXPECT_EQ(createReportClass("RegistryProbeC"), nullptr);
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
