#include "engine_report_fixture.h"

#include "component/errors/error_handling.h"

#include "data/control.h"
#include "data/dictionary.h"
#include "data/hr_environment.h"
#include "schema/schema.h"
#include "support/test_environment.h"

namespace orvalis::testing {

void EngineReportTest::SetUp() {
  db_ = std::make_unique<test::ScratchDatabase>(GetParam());
  env_ = test::installEnvironment(db_->url());
  createSchema(env_->hrConnection());
  clearDictionaryCache();
  clearControlCache();
  errors_ = installRecordingErrorComponent();
}

void EngineReportTest::TearDown() {
  HREnvironment::set(nullptr);
  setErrorComponentFactory(nullptr);
  env_.reset();
  db_.reset();
  clearDictionaryCache();
  clearControlCache();
}

}  // namespace orvalis::testing
