#include "audit_fixture.h"

#include "data/control.h"
#include "data/dictionary.h"
#include "data/hr_environment.h"
#include "runtime/basic_string.h"
#include "schema/schema.h"
#include "support/test_environment.h"

namespace orvalis::testing {

void AuditFixture::open(test::Engine engine) {
  db_ = std::make_unique<test::ScratchDatabase>(engine);
  env_ = test::installEnvironment(db_->url(), [](StandaloneConfig& c) { c.employeeCode = "100002"; });
  createSchema(env_->hrConnection());
  clearControlCache();
  clearDictionaryCache();
  errors_ = installRecordingErrorComponent();
  exec("insert into PNLEMPMST (VARIATION_ID, EMP_ID, SURNAME, TEMPLATE_ID, DATE_CALC) values "
       "('ORV01', '100001', 'Ames', 'M', '2024-05-31')");
  exec("insert into PNLEMPMST (VARIATION_ID, EMP_ID, SURNAME, DATE_CALC) values "
       "('ORV01', '100002', 'Bell', '2024-05-31')");
}

void AuditFixture::TearDown() {
  HREnvironment::set(nullptr);
  env_.reset();
  db_.reset();
}

std::string AuditFixture::scalar(const std::string& sql) {
  Recordset rs = env_->hrConnection().query(sql);
  if (rs.eof()) return "";
  Value v = rs.get(0);
  return v.isDate() ? v.asDate().iso() : trim(v.text());
}

std::vector<std::string> AuditFixture::auditRows(const std::string& columns, const std::string& where) {
  Recordset rs = env_->hrConnection().query("select " + columns + " from ADMAUDIT where VARIATION_ID = 'ORV01' and " +
                                            where + " order by SEQ_ID");
  std::vector<std::string> rows;
  for (; !rs.eof(); rs.moveNext()) {
    std::string row;
    for (int i = 0; i < rs.fieldCount(); ++i) {
      if (i) row += "|";
      Value v = rs.get(i);
      row += v.isDate() ? v.asDate().iso() : trim(v.text());
    }
    rows.push_back(row);
  }
  return rows;
}

}  // namespace orvalis::testing
