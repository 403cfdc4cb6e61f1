#include "schema/dictionary_rows.h"

#include <cctype>
#include <map>
#include <string_view>

#include "runtime/basic_string.h"

namespace orvalis {

namespace {

using Map = std::map<std::string, std::string, std::less<>>;

const Map& entityCaptions() {
  static const Map m = {
      {"ADMDDENT", "Data Dictionary Entities"},
      {"ADMDDFLD", "Data Dictionary Fields"},
      {"ADMCNTRL", "Control Parameters"},
      {"ADMNOTE", "Notes"},
      {"ADMNOTES", "Record Notes"},
      {"ADMADRES", "Addresses"},
      {"ADMAUDIT", "Audit Trail"},
      {"ADMBNKHOL", "Bank Holidays"},
      {"ADMUSER", "Users"},
      {"ADMFDAC", "Field and Data Access"},
      {"MENPERM", "Menu Permissions"},
      {"MENLIST", "Menu Lists"},
      {"MENUSER", "User Groups"},
      {"ADMREASON", "Rejection Reasons"},
      {"ADMREJECT", "Rejected Transactions"},
      {"ADMUDCAT", "User Defined Field Categories"},
      {"ADMUDDEF", "User Defined Fields"},
      {"ADMUDDAT", "User Defined Field Values"},
      {"ADMGRIDH", "Queries"},
      {"ADMGRIDD", "Query Details"},
      {"PNLDEPT", "Departments"},
      {"PNLLOCS", "Locations"},
      {"PNLJOB", "Jobs"},
      {"PNLJOBHST", "Job History"},
      {"PNLSEX", "Gender"},
      {"PNLNATION", "Nationalities"},
      {"PNLETHNIC", "Ethnic Origins"},
      {"PNLCOLOUR", "Colour"},
      {"PNLRELIG", "Community Background"},
      {"PNLSOC", "Occupational Classification"},
      {"PNLRECMET", "Recruitment Methods"},
      {"PNLHOLGRD", "Holiday Grades"},
      {"PNLSALGRD", "Salary Grades"},
      {"PNLSALLOC", "Salary Grades by Location"},
      {"PNLSCALE", "Salary Scales"},
      {"PNLWTE", "WTE Rules"},
      {"PNLJOBCAT", "Job Categories"},
      {"PNLMAN", "Line Managers"},
      {"PNLEHRES", "Job Change Reasons"},
      {"PNLREMRES", "Remission Reasons"},
      {"PNLEMPTP", "Employee Types"},
      {"PNLEMPLOY", "Employment Types"},
      {"PNLCONTYP", "Contract Types"},
      {"PNLSTAEMP", "Employment Status"},
      {"PNLABSTYP", "Absence Types"},
      {"PNLABSENT", "Absence Reasons"},
      {"PNLABSACT", "Absence Actions"},
      {"PNLCRTMET", "Certification Methods"},
      {"PNLDRYRULE", "Diary Rules"},
      {"PNLCHKLST", "Check-lists"},
      {"PNLCHKITM", "Check-list Items"},
      {"PNLEMPCHK", "Employee Check-list Items"},
      {"PNLCAT", "Working Patterns"},
      {"PNLCATFWP", "Fixed Working Patterns"},
      {"PNLCATNW", "Non-Working Days"},
      {"PNLSTRTYP", "Structure Types"},
      {"PNLSTRUCT", "Organisation Structure"},
      {"PNLEMPOS", "Employee Positions"},
      {"PNLEMPMST", "Employee Details"},
      {"PNLEMPMSTX", "Employee Details (Extra)"},
      {"PNLEMPHST", "Employee Job History"},
      {"PNLEMPABS", "Employee Absences"},
      {"PNLEMPHOL", "Employee Holiday Years"},
      {"PNLEMPSH", "Employee Salary History"},
      {"PNLEMPPEN", "Employee Pensions"},
      {"PNLCRSTYP", "Course Types"},
      {"PNLCRS", "Courses"},
      {"PNLEMPTRN", "Employee Training"},
      {"PNLEMPHESAP", "HESA Person Record"},
      {"PNLEMPHESAC", "HESA Contract Record"},
      {"PNLVACANT", "Vacancies"},
      {"PNLCAND", "Applicants"},
      {"PNLVACRES", "Vacancy Results"},
      {"PNLVACST", "Vacancy Stages"},
      {"PAYTMPLT", "Payroll Templates"},
      {"PAYCALPRD", "Payroll Calendar"},
      {"PAYCON", "Pay Contracts"},
      {"PAYINPDET", "Pay Input Details"},
      {"PAYBATCH", "Pay Batches"},
      {"PAYBATGEN", "Pay Batch Lines"},
      {"HESSEXORT", "HESA Sexual Orientation"},
      {"HESETHNIC", "HESA Ethnicity"},
      {"HESNATION", "HESA Nationality"},
      {"HESDISABLE", "HESA Disability"},
      {"HESRELBLF", "HESA Religion or Belief"},
      {"HESPARLEAVE", "HESA Parental Leave"},
      {"HESABLWELSH", "HESA Ability to Teach in Welsh"},
      {"HESACTCHQUAL", "HESA Teaching Qualifications"},
      {"HESREGBODY", "HESA Regulatory Bodies"},
      {"HESHQHELD", "HESA Highest Qualifications"},
      {"HESCURACCDIS", "HESA Academic Disciplines"},
      {"HESECRSTAT", "HESA Early Career Researcher"},
      {"HESRESAST", "HESA Research Assistant"},
      {"HESCLINARD", "HESA Clinical Academic Grades"},
      {"HESPREVEMP", "HESA Previous Employment"},
      {"HESPREVHEI", "HESA Previous Institutions"},
      {"HESACTLEAVE", "HESA Activity After Leaving"},
      {"HESLOCLEAVE", "HESA Location After Leaving"},
      {"HESCAMPID", "HESA Campuses"},
      {"HESTERMS", "HESA Terms of Employment"},
      {"HESMOEMP", "HESA Mode of Employment"},
      {"HESACEMPFUN", "HESA Academic Employment Function"},
      {"HESTCHWLH", "HESA Teaching Workload"},
      {"HESHEIJOINT", "HESA Joint Appointments"},
      {"HESLEVELS", "HESA Contract Levels"},
      {"HESRESCON", "HESA Reasons for End of Contract"},
      {"HESSOBS", "HESA Source of Basic Salary"},
      {"HESPSCAG", "HESA Staff Categories"},
      {"HESSPOINT", "HESA Salary Points"},
      {"HESSALREF", "HESA Salary References"},
      {"HESNHSCON", "HESA NHS Contracts"},
      {"HESNHSCONGR", "HESA NHS Contract Grades"},
      {"HESHSPEC", "HESA Health Specialties"},
      {"HESCLINICAL", "HESA Clinical Status"},
      {"HESCLINSUB", "HESA Clinical Subjects"},
      {"HESACTSOC", "HESA Activity SOC Codes"},
      {"HESCCENTRE", "HESA Cost Centres"},
  };
  return m;
}

// Captions by column name, for every table that has the column.
const Map& columnCaptions() {
  static const Map m = {
      {"VARIATION_ID", "Company"},
      {"EMP_ID", "Employee Reference"},
      {"SEQ_ID", "Sequence"},
      {"CODE_ID", "Code"},
      {"DESCRIPTION", "Description"},
      {"U_VERSION", "Version"},
      {"TITLE_ID", "Title"},
      {"FORENAME", "Forename"},
      {"SURNAME", "Surname"},
      {"KNOWNAS", "Known As"},
      {"INITIALS", "Initials"},
      {"DATE_BIRTH", "Date of Birth"},
      {"AGE", "Age"},
      {"SEX_ID", "Gender"},
      {"MARITAL_ID", "Marital Status"},
      {"NATIONALITY_ID", "Nationality"},
      {"ETH_ORIG_ID", "Ethnic Origin"},
      {"COLOUR_ID", "Colour"},
      {"RELIGION_ID", "Community Background"},
      {"NI_NUMBER", "NI Number"},
      {"HESA_ID", "HESA Staff Identifier"},
      {"STATUS_ID", "Status"},
      {"DATE_START", "Date Started"},
      {"DATE_LEFT", "Date Left"},
      {"LEAVE_REASON_ID", "Reason for Leaving"},
      {"DEPT_ID", "Department"},
      {"LOC_ID", "Location"},
      {"JOB_ID", "Job"},
      {"CAT_ID", "Working Pattern"},
      {"PNL_CAT_ID", "Working Pattern"},
      {"TEMPLATE_ID", "Payroll Template"},
      {"PAYROLL_ID", "Payroll Reference"},
      {"PAY_CAT_ID", "Pay Category"},
      {"MAN_ID", "Line Manager"},
      {"REPORTS_TO", "Reports To"},
      {"REC_METHOD_ID", "Recruitment Method"},
      {"REF_1_ID", "First Reference"},
      {"REF_2_ID", "Second Reference"},
      {"STD_HOURS", "Standard Hours"},
      {"WEEKS_PER_YEAR", "Weeks per Year"},
      {"SALARY", "Salary"},
      {"HOME_ADD_ID", "Home Address"},
      {"EMER_ADD_ID", "Emergency Contact"},
      {"NOK_ADD_ID", "Next of Kin"},
      {"NOK_WORK_ADD_ID", "Next of Kin Work Address"},
      {"E_MAIL", "E-mail"},
      {"TAX_CODE", "Tax Code"},
      {"TAX_BASIS", "Tax Basis"},
      {"WK1_FLAG", "Week 1 Basis"},
      {"NI_CAT", "NI Category"},
      {"NI_DETAILS", "NI Details"},
      {"DIR_ID", "Director"},
      {"DATE_CALC", "Payroll Calculation Date"},
      {"NOTE_ID", "Note"},
      {"ACCESS_STAMP", "Access Stamp"},
      {"PORTAL_ROLE", "Portal Role"},
      {"WINDOWS_ID", "Network Login"},
      {"EMP_STATUS_ID", "Employment Status"},
      {"START_DATE", "Start Date"},
      {"END_DATE", "End Date"},
      {"HOL_GRD_ID", "Holiday Grade"},
      {"SAL_GRD_ID", "Salary Grade"},
      {"SCALE_POINT", "Scale Point"},
      {"WTE_ID", "WTE Rule"},
      {"HOURS_PER_WEEK", "Hours per Week"},
      {"ANALYSIS_ID", "Job Category"},
      {"JOB_FRACTION", "Job Fraction"},
      {"WTE_FACTOR", "WTE Factor"},
      {"REASON_ID", "Reason"},
      {"SOC_ID", "Occupational Classification"},
      {"EMP_TYPE", "Employee Type"},
      {"EMPLOY_ID", "Employment Type"},
      {"CON_TYPE_ID", "Contract Type"},
      {"REMISSION_ID", "Remission Reason"},
      {"PARENT_JOB_ID", "Parent Job"},
      {"WP_START_DATE", "Pattern Start Date"},
      {"TYPE_ID", "Absence Type"},
      {"ABSENT_ID", "Absence Reason"},
      {"START_TIME", "Start Time"},
      {"END_TIME", "End Time"},
      {"DURATION", "Duration"},
      {"POST_SEQ_ID", "Post"},
      {"ACTION_ID", "Action"},
      {"REVIEW_DATE", "Review Date"},
      {"DUR_HOURS", "Duration in Hours"},
      {"CERTIFIED", "Certified"},
      {"CERT_METHOD_ID", "Certification Method"},
      {"VACANCY_ID", "Vacancy"},
  };
  return m;
}

// Captions of one table's columns where the generic one does not fit.
const Map& fieldCaptions() {
  static const Map m = {
      {"PNLEMPABS.START_TIME", "Start (AM/PM)"},
      {"PNLEMPABS.END_TIME", "End (AM/PM)"},
      {"PNLEMPABS.START_ACT_TIME", "Actual Start Time"},
      {"PNLEMPABS.END_ACT_TIME", "Actual End Time"},
      {"PNLEMPABS.DUR_CAL_DAYS", "Calendar Days"},
      {"PNLEMPHST.STATUS_ID", "Post Status"},
      {"PNLEMPHST.SEQ_ID", "Post Reference"},
      {"PNLEMPHST.DESCRIPTION", "Post Summary"},
      {"PNLEMPHOL.ENTITLEMENT", "Holiday Entitlement"},
      {"PNLEMPMST.HOME_PHONE_HOME", "Home Phone"},
      {"ADMADRES.PHONE_HOME", "Home Phone"},
      {"ADMADRES.PHONE_OFFICE", "Office Phone"},
      {"ADMADRES.POST_CODE", "Postcode"},
      {"ADMAUDIT.AUD_DATE", "Audit Date"},
      {"ADMAUDIT.AUD_TIME", "Audit Time"},
      {"ADMAUDIT.AUD_ACTION", "Action"},
      {"ADMAUDIT.AUD_DATA", "New Value"},
      {"ADMAUDIT.AUD_WAS", "Old Value"},
      {"ADMAUDIT.KEY_ID", "Record Key"},
      {"ADMUSER.USER_NAME", "User Name"},
      {"PNLCAND.CAN_SURNAME", "Applicant Surname"},
      {"PNLCAND.CAN_FORENAME", "Applicant Forename"},
      {"PNLCAND.CAN_DOB", "Applicant Date of Birth"},
      {"PNLCAND.DATE_APP_REC", "Application Received"},
      // Training.
      {"PNLCRS.CRS_TYPE_ID", "Course Type"},
      {"PNLCRS.PROVIDER", "Provider"},
      {"PNLCRS.CPD_YN", "Counts as CPD"},
      {"PNLCRS.DEFAULT_HOURS", "Default Hours"},
      {"PNLCRS.DEFAULT_COST", "Default Cost"},
      {"PNLEMPTRN.SEQ_ID", "Training Event"},
      {"PNLEMPTRN.COURSE_ID", "Course"},
      {"PNLEMPTRN.DAYS", "Days"},
      {"PNLEMPTRN.HOURS", "Hours"},
      {"PNLEMPTRN.STATUS_ID", "Booking Status"},
      {"PNLEMPTRN.COURSE_COST", "Course Cost"},
      {"PNLEMPTRN.TRAVEL_COST", "Travel Cost"},
      {"PNLEMPTRN.OTHER_COST", "Other Costs"},
      {"PNLEMPTRN.CPD_YN", "Counts as CPD"},
      // Check-lists.
      {"PNLCHKLST.TRIGGER_ID", "Trigger (Joiner, Leaver, Post Change)"},
      {"PNLCHKLST.BASE_DATE_FIELD", "Items Due From"},
      {"PNLCHKITM.CHK_ID", "Check-list"},
      {"PNLCHKITM.SEQ_ID", "Item"},
      {"PNLCHKITM.OFFSET_NUMBER", "Due After"},
      {"PNLCHKITM.OFFSET_UNIT", "Due After Unit (D, W, M, Y)"},
      {"PNLCHKITM.RESPONSIBLE_ROLE", "Responsible"},
      {"PNLCHKITM.MANDATORY_YN", "Mandatory"},
      {"PNLEMPCHK.CHK_ID", "Check-list"},
      {"PNLEMPCHK.ITEM_SEQ_ID", "Item"},
      {"PNLEMPCHK.DUE_DATE", "Due Date"},
      {"PNLEMPCHK.COMPLETED_DATE", "Completed"},
      {"PNLEMPCHK.COMPLETED_BY", "Completed By"},
      {"PNLEMPCHK.STATUS_ID", "Item Status"},
      // HESA person record.
      {"PNLEMPHESAP.SEXORT", "Sexual Orientation"},
      {"PNLEMPHESAP.ETHNIC", "Ethnicity"},
      {"PNLEMPHESAP.NATION", "Nationality"},
      {"PNLEMPHESAP.NATIOND", "Dual Nationality"},
      {"PNLEMPHESAP.NATIOND_2", "Dual Nationality 2"},
      {"PNLEMPHESAP.DISABLE", "Disability"},
      {"PNLEMPHESAP.RELBLF", "Religion or Belief"},
      {"PNLEMPHESAP.PARLEAVE", "Parental Leave"},
      {"PNLEMPHESAP.ABLWELSH", "Ability to Teach in Welsh"},
      {"PNLEMPHESAP.ACTCHQUAL", "Teaching Qualification"},
      {"PNLEMPHESAP.ACTCHQUAL_2", "Teaching Qualification 2"},
      {"PNLEMPHESAP.ACTCHQUAL_3", "Teaching Qualification 3"},
      {"PNLEMPHESAP.ACTCHQUAL_4", "Teaching Qualification 4"},
      {"PNLEMPHESAP.ACTCHQUAL_5", "Teaching Qualification 5"},
      {"PNLEMPHESAP.ACTCHQUAL_6", "Teaching Qualification 6"},
      {"PNLEMPHESAP.REGBODY", "Regulatory Body"},
      {"PNLEMPHESAP.REGBODY_2", "Regulatory Body 2"},
      {"PNLEMPHESAP.HQHELD", "Highest Qualification Held"},
      {"PNLEMPHESAP.CURACCDIS", "Current Academic Discipline"},
      {"PNLEMPHESAP.CURACCDIS_2", "Current Academic Discipline 2"},
      {"PNLEMPHESAP.ECRSTAT", "Early Career Researcher"},
      {"PNLEMPHESAP.RESAST", "Research Assistant"},
      {"PNLEMPHESAP.CLINARD", "Clinical Academic Grade"},
      {"PNLEMPHESAP.PREVEMP", "Previous Employment"},
      {"PNLEMPHESAP.PREVHEI", "Previous HE Institution"},
      {"PNLEMPHESAP.DATEFHEI", "Date of First HE Appointment"},
      {"PNLEMPHESAP.DATELEFT", "Date Left Institution"},
      {"PNLEMPHESAP.ACTLEAVE", "Activity After Leaving"},
      {"PNLEMPHESAP.LOCLEAVE", "Location After Leaving"},
      // HESA contract record.
      {"PNLEMPHESAC.STAFF_ID", "HESA Staff Identifier"},
      {"PNLEMPHESAC.CONTID", "Contract Identifier"},
      {"PNLEMPHESAC.CAMPID", "Campus"},
      {"PNLEMPHESAC.TERMS", "Terms of Employment"},
      {"PNLEMPHESAC.MOEMP", "Mode of Employment"},
      {"PNLEMPHESAC.ACEMPFUN", "Academic Employment Function"},
      {"PNLEMPHESAC.CONFTE", "Contract FTE"},
      {"PNLEMPHESAC.TCHWLH", "Teaching Workload"},
      {"PNLEMPHESAC.HEIJOINT", "Joint Appointment Institution"},
      {"PNLEMPHESAC.STARTCON", "Contract Start Date"},
      {"PNLEMPHESAC.ENDCON", "Contract End Date"},
      {"PNLEMPHESAC.LEVELS", "Contract Level"},
      {"PNLEMPHESAC.RESCON", "Reason for End of Contract"},
      {"PNLEMPHESAC.SOBS", "Source of Basic Salary"},
      {"PNLEMPHESAC.SOBS_2", "Source of Basic Salary 2"},
      {"PNLEMPHESAC.SOBS_3", "Source of Basic Salary 3"},
      {"PNLEMPHESAC.PSCAG", "Staff Category"},
      {"PNLEMPHESAC.SPOINT", "Salary Point"},
      {"PNLEMPHESAC.SALREF", "Salary Reference"},
      {"PNLEMPHESAC.NHSCON", "NHS Contract"},
      {"PNLEMPHESAC.NHSCONGR", "NHS Contract Grade"},
      {"PNLEMPHESAC.HSPEC", "Health Specialty"},
      {"PNLEMPHESAC.HSPEC_2", "Health Specialty 2"},
      {"PNLEMPHESAC.HSPEC_3", "Health Specialty 3"},
      {"PNLEMPHESAC.CLINICAL", "Clinical Status"},
      {"PNLEMPHESAC.CLINSUB", "Clinical Subject"},
      {"PNLEMPHESAC.CLINSUB_2", "Clinical Subject 2"},
      {"PNLEMPHESAC.CLINSUB_3", "Clinical Subject 3"},
      {"PNLEMPHESAC.ACTSOC", "Activity SOC Code"},
      {"PNLEMPHESAC.CCENTRE", "Cost Centre"},
      {"PNLEMPHESAC.CCPROP", "Cost Centre Proportion"},
      {"PNLEMPHESAC.ACTSOC_2", "Activity SOC Code 2"},
      {"PNLEMPHESAC.CCENTRE_2", "Cost Centre 2"},
      {"PNLEMPHESAC.CCPROP_2", "Cost Centre Proportion 2"},
      {"PNLEMPHESAC.ACTSOC_3", "Activity SOC Code 3"},
      {"PNLEMPHESAC.CCENTRE_3", "Cost Centre 3"},
      {"PNLEMPHESAC.CCPROP_3", "Cost Centre Proportion 3"},
  };
  return m;
}

// Code tables by column name, for every table that has the column (the
// code tables' own CODE_ID excepted).
const Map& columnCodeTables() {
  static const Map m = {
      {"DEPT_ID", "PNLDEPT"},
      {"LOC_ID", "PNLLOCS"},
      {"JOB_ID", "PNLJOB"},
      {"PARENT_JOB_ID", "PNLJOB"},
      {"SEX_ID", "PNLSEX"},
      {"NATIONALITY_ID", "PNLNATION"},
      {"ETH_ORIG_ID", "PNLETHNIC"},
      {"COLOUR_ID", "PNLCOLOUR"},
      {"RELIGION_ID", "PNLRELIG"},
      {"SOC_ID", "PNLSOC"},
      {"REC_METHOD_ID", "PNLRECMET"},
      {"HOL_GRD_ID", "PNLHOLGRD"},
      {"SAL_GRD_ID", "PNLSALGRD"},
      {"WTE_ID", "PNLWTE"},
      {"ANALYSIS_ID", "PNLJOBCAT"},
      {"JOB_CAT_ID", "PNLJOBCAT"},
      {"MAN_ID", "PNLMAN"},
      {"LEAVE_REASON_ID", "PNLEHRES"},
      {"REMISSION_ID", "PNLREMRES"},
      {"EMP_TYPE", "PNLEMPTP"},
      {"EMPLOY_ID", "PNLEMPLOY"},
      {"CON_TYPE_ID", "PNLCONTYP"},
      {"EMP_STATUS_ID", "PNLSTAEMP"},
      {"ABSENT_ID", "PNLABSENT"},
      {"CERT_METHOD_ID", "PNLCRTMET"},
      {"PNL_CAT_ID", "PNLCAT"},
      {"TEMPLATE_ID", "PAYTMPLT"},
      {"VACANCY_ID", "PNLVACANT"},
  };
  return m;
}

// Code tables of one table's columns.
const Map& fieldCodeTables() {
  static const Map m = {
      {"PNLEMPMST.CAT_ID", "PNLCAT"},
      {"PNLEMPHST.REASON_ID", "PNLEHRES"},
      {"PNLEMPSH.REASON_ID", "PNLEHRES"},
      {"ADMREJECT.REASON_ID", "ADMREASON"},
      {"PNLEMPABS.TYPE_ID", "PNLABSTYP"},
      {"PNLABSENT.TYPE_ID", "PNLABSTYP"},
      {"PNLEMPABS.ACTION_ID", "PNLABSACT"},
      {"PNLCRS.CRS_TYPE_ID", "PNLCRSTYP"},
      {"PNLEMPTRN.COURSE_ID", "PNLCRS"},
      {"PNLCHKITM.CHK_ID", "PNLCHKLST"},
      {"PNLEMPCHK.CHK_ID", "PNLCHKLST"},
      // HESA person record. Columns that repeat an employee fact link to
      // the employee master: the HESA check tests them for emptiness only.
      {"PNLEMPHESAP.SEXORT", "HESSEXORT"},
      {"PNLEMPHESAP.ETHNIC", "HESETHNIC"},
      {"PNLEMPHESAP.NATION", "HESNATION"},
      {"PNLEMPHESAP.NATIOND", "HESNATION"},
      {"PNLEMPHESAP.NATIOND_2", "HESNATION"},
      {"PNLEMPHESAP.DISABLE", "HESDISABLE"},
      {"PNLEMPHESAP.RELBLF", "HESRELBLF"},
      {"PNLEMPHESAP.PARLEAVE", "HESPARLEAVE"},
      {"PNLEMPHESAP.ABLWELSH", "HESABLWELSH"},
      {"PNLEMPHESAP.ACTCHQUAL", "HESACTCHQUAL"},
      {"PNLEMPHESAP.ACTCHQUAL_2", "HESACTCHQUAL"},
      {"PNLEMPHESAP.ACTCHQUAL_3", "HESACTCHQUAL"},
      {"PNLEMPHESAP.ACTCHQUAL_4", "HESACTCHQUAL"},
      {"PNLEMPHESAP.ACTCHQUAL_5", "HESACTCHQUAL"},
      {"PNLEMPHESAP.ACTCHQUAL_6", "HESACTCHQUAL"},
      {"PNLEMPHESAP.REGBODY", "HESREGBODY"},
      {"PNLEMPHESAP.REGBODY_2", "HESREGBODY"},
      {"PNLEMPHESAP.HQHELD", "HESHQHELD"},
      {"PNLEMPHESAP.CURACCDIS", "HESCURACCDIS"},
      {"PNLEMPHESAP.CURACCDIS_2", "HESCURACCDIS"},
      {"PNLEMPHESAP.ECRSTAT", "HESECRSTAT"},
      {"PNLEMPHESAP.RESAST", "HESRESAST"},
      {"PNLEMPHESAP.CLINARD", "HESCLINARD"},
      {"PNLEMPHESAP.PREVEMP", "HESPREVEMP"},
      {"PNLEMPHESAP.PREVHEI", "HESPREVHEI"},
      {"PNLEMPHESAP.DATELEFT", "PNLEMPMST"},
      {"PNLEMPHESAP.ACTLEAVE", "HESACTLEAVE"},
      {"PNLEMPHESAP.LOCLEAVE", "HESLOCLEAVE"},
      // HESA contract record.
      {"PNLEMPHESAC.STAFF_ID", "PNLEMPMST"},
      {"PNLEMPHESAC.CONTID", "PNLEMPMST"},
      {"PNLEMPHESAC.CAMPID", "HESCAMPID"},
      {"PNLEMPHESAC.TERMS", "HESTERMS"},
      {"PNLEMPHESAC.MOEMP", "HESMOEMP"},
      {"PNLEMPHESAC.ACEMPFUN", "HESACEMPFUN"},
      {"PNLEMPHESAC.TCHWLH", "HESTCHWLH"},
      {"PNLEMPHESAC.HEIJOINT", "HESHEIJOINT"},
      {"PNLEMPHESAC.STARTCON", "PNLEMPMST"},
      {"PNLEMPHESAC.ENDCON", "PNLEMPMST"},
      {"PNLEMPHESAC.LEVELS", "HESLEVELS"},
      {"PNLEMPHESAC.RESCON", "HESRESCON"},
      {"PNLEMPHESAC.SOBS", "HESSOBS"},
      {"PNLEMPHESAC.SOBS_2", "HESSOBS"},
      {"PNLEMPHESAC.SOBS_3", "HESSOBS"},
      {"PNLEMPHESAC.PSCAG", "HESPSCAG"},
      {"PNLEMPHESAC.SPOINT", "HESSPOINT"},
      {"PNLEMPHESAC.SALREF", "HESSALREF"},
      {"PNLEMPHESAC.NHSCON", "HESNHSCON"},
      {"PNLEMPHESAC.NHSCONGR", "HESNHSCONGR"},
      {"PNLEMPHESAC.HSPEC", "HESHSPEC"},
      {"PNLEMPHESAC.HSPEC_2", "HESHSPEC"},
      {"PNLEMPHESAC.HSPEC_3", "HESHSPEC"},
      {"PNLEMPHESAC.CLINICAL", "HESCLINICAL"},
      {"PNLEMPHESAC.CLINSUB", "HESCLINSUB"},
      {"PNLEMPHESAC.CLINSUB_2", "HESCLINSUB"},
      {"PNLEMPHESAC.CLINSUB_3", "HESCLINSUB"},
      {"PNLEMPHESAC.ACTSOC", "HESACTSOC"},
      {"PNLEMPHESAC.CCENTRE", "HESCCENTRE"},
      {"PNLEMPHESAC.ACTSOC_2", "HESACTSOC"},
      {"PNLEMPHESAC.CCENTRE_2", "HESCCENTRE"},
      {"PNLEMPHESAC.ACTSOC_3", "HESACTSOC"},
      {"PNLEMPHESAC.CCENTRE_3", "HESCCENTRE"},
  };
  return m;
}

// Clock-time texts ("09:30", "HH:MM:SS").
bool isTimeText(std::string_view key) {
  static const std::string_view keys[] = {"PNLEMPABS.START_ACT_TIME", "PNLEMPABS.END_ACT_TIME",
                                          "PNLCATFWP.START_TIME", "PNLCATFWP.END_TIME",
                                          "ADMAUDIT.AUD_TIME"};
  for (std::string_view k : keys) {
    if (k == key) return true;
  }
  return false;
}

// Figures kept in hundredths (2550 = 25.5 days).
bool isSmallValue(std::string_view key) {
  static const std::string_view keys[] = {"PNLEMPHOL.ENTITLEMENT", "PNLEMPHOL.CARRIED_FORWARD",
                                          "PNLEMPHOL.TAKEN"};
  for (std::string_view k : keys) {
    if (k == key) return true;
  }
  return false;
}

std::string lookup(const Map& m, std::string_view key) {
  auto it = m.find(key);
  return it == m.end() ? std::string() : it->second;
}

// "DATE_BIRTH" -> "Date Birth".
std::string titleCase(std::string_view name) {
  std::string out;
  bool start = true;
  for (char ch : name) {
    if (ch == '_') {
      out += ' ';
      start = true;
    } else {
      out += start ? static_cast<char>(std::toupper(static_cast<unsigned char>(ch)))
                   : static_cast<char>(std::tolower(static_cast<unsigned char>(ch)));
      start = false;
    }
  }
  return out;
}

std::string dataTypeOf(const std::string& key, const ColumnDef& c) {
  if (isTimeText(key)) return "T";
  if (c.baseType == "DATE" || c.baseType == "TIMESTAMP") return "D";
  if (c.baseType == "SMALLINT") return "B";
  if (c.baseType == "INTEGER" || c.baseType == "DOUBLE PRECISION" || c.baseType == "NUMERIC") return "N";
  return "S";
}

int sizeOf(const ColumnDef& c) {
  if (c.size > 0) return c.size;
  if (c.baseType == "DATE") return 12;
  if (c.baseType == "TEXT") return 0;
  return 15;
}

bool isCodeTable(const TableDef& t) {
  return t.column("CODE_ID") != nullptr && t.column("DESCRIPTION") != nullptr;
}

}  // namespace

std::string codeTableOf(const std::string& table, const std::string& column) {
  std::string t = upperTrim(table);
  std::string c = upperTrim(column);
  std::string found = lookup(fieldCodeTables(), t + "." + c);
  if (!found.empty()) return found;
  found = lookup(columnCodeTables(), c);
  if (found == t) return "";  // a table's own key
  return found;
}

std::vector<DictionaryEntity> dictionaryEntities(const DdlModel& model) {
  std::vector<DictionaryEntity> rows;
  for (const TableDef& t : model.tables) {
    DictionaryEntity e;
    e.entity = t.name;
    e.caption = lookup(entityCaptions(), t.name);
    if (e.caption.empty()) e.caption = t.name;
    std::string prefix = t.name.substr(0, 3);
    e.module = (prefix == "PNL" || prefix == "ADM" || prefix == "PAY") ? prefix
               : prefix == "MEN"                                     ? "ADM"
                                                                     : "PNL";
    const ColumnDef* seq = t.column("SEQ_ID");
    e.numericSeqId = (seq && seq->baseType == "INTEGER") ? "Y" : "N";
    e.keyStructure = join(t.primaryKey, ",");
    rows.push_back(std::move(e));
  }
  return rows;
}

std::vector<DictionaryField> dictionaryFields(const DdlModel& model) {
  std::vector<DictionaryField> rows;
  for (const TableDef& t : model.tables) {
    int sequence = 0;
    for (const ColumnDef& c : t.columns) {
      DictionaryField f;
      f.entity = t.name;
      f.field = c.name;
      f.sequence = ++sequence;
      std::string key = t.name + "." + c.name;
      f.caption = lookup(fieldCaptions(), key);
      if (f.caption.empty()) f.caption = lookup(columnCaptions(), c.name);
      if (f.caption.empty()) f.caption = titleCase(c.name);
      f.dataType = dataTypeOf(key, c);
      f.fkTable = isCodeTable(t) && c.name == "CODE_ID" ? "" : codeTableOf(t.name, c.name);
      f.smallValue = isSmallValue(key) ? "Y" : "N";
      f.size = sizeOf(c);
      rows.push_back(std::move(f));
    }
  }
  // Fields the reports name that are not stored columns.
  auto described = [&](const char* entity, const char* field, int size) {
    DictionaryField f;
    f.entity = entity;
    f.field = field;
    std::string key = std::string(entity) + "." + field;
    f.caption = lookup(fieldCaptions(), key);
    f.dataType = "S";
    f.fkTable = lookup(fieldCodeTables(), key);
    f.smallValue = "N";
    f.size = size;
    f.stored = false;
    rows.push_back(std::move(f));
  };
  if (model.table("PNLEMPMST")) described("PNLEMPMST", "HOME_PHONE_HOME", 30);
  if (model.table("PNLEMPHESAC")) described("PNLEMPHESAC", "STAFF_ID", 20);
  return rows;
}

}  // namespace orvalis
