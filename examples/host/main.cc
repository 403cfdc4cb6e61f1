// A host program: creates "ORVALIS.SIR_HE" through the class registry, runs
// its ExtractData with an environment and an error component of its own,
// and prints the rows.
//
//   orvalis_host DATABASE-URL        (sqlite:/path/demo.db, postgresql://...)
// Exit status 0 when ExtractData returned True, 1 when False, 2 on an error.

#include <iostream>
#include <memory>

#include "component/class_registry.h"
#include "component/errors/error_handling.h"
#include "data/standalone_environment.h"
#include "reports/report_classes.h"
#include "runtime/recordset.h"

namespace {

// The host's error component: shows each error and leaves the procedure.
class HostErrors final : public orvalis::ErrorComponent {
 public:
  int RaiseError(const std::string& component, const std::string& module, const std::string& procedure,
                 const orvalis::Error& error, const orvalis::ApplicationInfo&, long line, std::string&,
                 std::string&) override {
    std::cerr << "host: " << component << "." << module << "." << procedure << " line " << line << ": "
              << error.what() << "\n";
    return orvalis::kAnswerLeave;
  }
};

}  // namespace

int main(int argc, char** argv) {
  if (argc != 2) {
    std::cerr << "usage: orvalis_host DATABASE-URL\n";
    return 2;
  }
  try {
    orvalis::registerReportClasses();
    orvalis::setErrorComponentFactory([] { return std::make_unique<HostErrors>(); });

    orvalis::StandaloneConfig config;
    config.hrUrl = argv[1];
    config.companyCode = "ORV01";
    config.userCode = "ADMIN";
    auto environment = std::make_shared<orvalis::StandaloneEnvironment>(std::move(config));

    std::unique_ptr<orvalis::ReportClass> report = orvalis::requireReportClass("ORVALIS.SIR_HE");
    orvalis::Recordset rows;
    const bool result = report->ExtractData(environment, "SIR_DATA", orvalis::Parameters(), rows);

    for (int i = 0; i < rows.fieldCount(); ++i) std::cout << (i ? "\t" : "") << rows.field(i).name;
    std::cout << "\n";
    long count = 0;
    if (rows.isOpen() && rows.recordCount() > 0) {
      for (rows.moveFirst(); !rows.eof(); rows.moveNext(), ++count) {
        for (int i = 0; i < rows.fieldCount(); ++i) std::cout << (i ? "\t" : "") << rows.get(i).text();
        std::cout << "\n";
      }
    }
    std::cout << "(" << count << " rows)\n";
    return result ? 0 : 1;
  } catch (const std::exception& e) {
    std::cerr << "host: " << e.what() << "\n";
    return 2;
  }
}
