#include "demo/demo_catalog.h"

#include <cstdio>

namespace orvalis::demo {

namespace {

std::vector<CodeTable> buildPlainCodeTables() {
  return {
      {"PNLSEX", {{"M", "Male"}, {"F", "Female"}, {"X", "Indeterminate"}, {"U", "Not known"}}},
      {"PNLNATION",
       {{"GBR", "British"},
        {"IRL", "Irish"},
        {"FRA", "French"},
        {"DEU", "German"},
        {"POL", "Polish"},
        {"ESP", "Spanish"},
        {"ITA", "Italian"},
        {"PRT", "Portuguese"},
        {"ROU", "Romanian"},
        {"IND", "Indian"},
        {"PAK", "Pakistani"},
        {"NGA", "Nigerian"},
        {"CHN", "Chinese"},
        {"USA", "American"},
        {"AUS", "Australian"}}},
      {"PNLETHNIC",
       {{"WB", "White - British"},
        {"WI", "White - Irish"},
        {"WO", "White - Other"},
        {"MWBC", "Mixed - White and Black Caribbean"},
        {"MWBA", "Mixed - White and Black African"},
        {"MWA", "Mixed - White and Asian"},
        {"AI", "Asian or Asian British - Indian"},
        {"AP", "Asian or Asian British - Pakistani"},
        {"AB", "Asian or Asian British - Bangladeshi"},
        {"BC", "Black or Black British - Caribbean"},
        {"BA", "Black or Black British - African"},
        {"CH", "Chinese"},
        {"OT", "Other ethnic group"},
        {"NK", "Not known"}}},
      {"PNLCOLOUR",
       {{"WH", "White"}, {"BL", "Black"}, {"AS", "Asian"}, {"MX", "Mixed"}, {"OT", "Other"}, {"NK", "Not known"}}},
      {"PNLRELIG",
       {{"P", "Protestant"},
        {".P", "Protestant (residuary method)"},
        {"C", "Roman Catholic"},
        {".RC", "Roman Catholic (residuary method)"},
        {"N", "Neither"},
        {".NO", "Not determined"},
        {"O", "Other religion"}}},
      {"PNLSOC",
       {{"1", "Managers, directors and senior officials"},
        {"2", "Professional occupations"},
        {"3", "Associate professional and technical"},
        {"4", "Administrative and secretarial"},
        {"5", "Skilled trades"},
        {"6", "Caring, leisure and other service"},
        {"7", "Sales and customer service"},
        {"8", "Process, plant and machine operatives"},
        {"9", "Elementary occupations"}}},
      {"PNLRECMET",
       {{"ADV", "Newspaper advertisement"},
        {"WEB", "Company website"},
        {"AGY", "Recruitment agency"},
        {"INT", "Internal appointment"},
        {"REF", "Employee referral"},
        {"JC", "Job Centre"}}},
      {"PNLJOBCAT",
       {{"ACAD", "Academic"},
        {"PROF", "Professional"},
        {"TECH", "Technical"},
        {"ADMIN", "Administrative"},
        {"MAN", "Manual"}}},
      {"PNLEHRES",
       {{"NEW", "New appointment"},
        {".PRO", "Promotion"},
        {".PROT", "Temporary promotion"},
        {"TRF", "Transfer"},
        {"REG", "Regrading"},
        {"HRS", "Change of hours"},
        {"RES", "Resignation"},
        {"RET", "Retirement"},
        {"RED", "Redundancy"},
        {"DIS", "Dismissal"},
        {"EOC", "End of fixed-term contract"}}},
      {"PNLREMRES",
       {{"UNION", "Trade union duties"},
        {"MGMT", "Management duties"},
        {"RSRCH", "Research time"},
        {"NONE", "No remission"}}},
      {"PNLEMPTP", {{"F", "Full time"}, {"P", "Part time"}, {"S", "Sessional"}}},
      {"PNLEMPLOY",
       {{"FT", "Full-time"},
        {"PT", "Part-time"},
        {".PT", "Part-time (casual)"},
        {".TTPT", "Term-time part-time"},
        {"JS", "Job share"}}},
      {"PNLCONTYP",
       {{"PERM", "Permanent"}, {"FTC", "Fixed term"}, {"CAS", "Casual"}, {"ZHC", "Zero hours"}}},
      {"PNLSTAEMP",
       {{"PERM", "Permanent"}, {"TEMP", "Temporary"}, {"SECD", "Secondment"}, {"ACT", "Acting up"}}},
      {"PNLABSACT",
       {{"RTW", "Return to work interview"},
        {"OHR", "Occupational health referral"},
        {"ST1", "Stage 1 attendance review"},
        {"ST2", "Stage 2 attendance review"},
        {"NONE", "No action"}}},
      {"PNLCRTMET", {{"SELF", "Self certificate"}, {"GP", "GP fit note"}, {"HOSP", "Hospital certificate"}}},
      {"ADMREASON",
       {{"INCOMP", "Incomplete details"},
        {"DUP", "Duplicate request"},
        {"POLICY", "Not within policy"},
        {"BUDGET", "No budget available"}}},
  };
}

}  // namespace

const std::vector<CodeTable>& plainCodeTables(int) {
  static const std::vector<CodeTable> tables = buildPlainCodeTables();
  return tables;
}

const std::vector<Code>& departments() {
  static const std::vector<Code> rows = {
      {"D01", "Executive Office"},      {"D02", "Finance"},           {"D03", "Human Resources"},
      {"D04", "Information Technology"}, {"D05", "Estates and Facilities"}, {"D06", "School of Engineering"},
      {"D07", "School of Business"},    {"D08", "School of Health"},  {"D09", "Library Services"},
      {"D10", "Catering Services"},     {"D11", "Student Services"},  {"D12", "Care Services"},
  };
  return rows;
}

const std::vector<Code>& locations(int company) {
  static const std::vector<Code> england = {
      {"L01", "Leeds"},   {"L02", "Manchester"}, {"L03", "Birmingham"}, {"L04", "Bristol"},
      {"L05", "Nottingham"}, {"L06", "Sheffield"}, {"L07", "Cardiff"},  {"L08", "London"},
  };
  static const std::vector<Code> northernIreland = {
      {"L01", "Belfast"}, {"L02", "Derry"},  {"L03", "Lisburn"},   {"L04", "Newry"},
      {"L05", "Armagh"},  {"L06", "Omagh"},  {"L07", "Coleraine"}, {"L08", "Enniskillen"},
  };
  return company % 2 == 1 ? northernIreland : england;
}

const std::vector<Job>& jobs() {
  static const std::vector<Job> rows = {
      {"J001", "Chief Executive", "1", "PROF", "GR8", "", "A", "D01", false, true},
      {"J002", "Director of Finance", "1", "PROF", "GR8", "J001", "A", "D02", false, true},
      {"J003", "Head of Human Resources", "1", "PROF", "GR7", "J001", "A", "D03", false, true},
      {"J004", "Payroll Officer", "4", "ADMIN", "GR4", "J003", "A", "D03", false, false},
      {"J005", "HR Adviser", "3", "PROF", "GR5", "J003", "A", "D03", false, false},
      {"J006", "Lecturer", "2", "ACAD", "GR6", "J010", "A", "D06", false, false},
      {"J007", "Senior Lecturer", "2", "ACAD", "GR7", "J010", "A", "D07", false, false},
      {"J008", "Professor", "2", "ACAD", "GR8", "J010", "A", "D08", false, false},
      {"J009", "Research Assistant", "2", "ACAD", "GR5", "J007", "A", "D06", false, false},
      {"J010", "Head of School", "1", "ACAD", "GR8", "J001", "A", "D07", false, true},
      {"J011", "Laboratory Technician", "3", "TECH", "GR4", "J010", "A", "D06", false, false},
      {"J012", "IT Support Analyst", "3", "TECH", "GR4", "J013", "A", "D04", false, false},
      {"J013", "Head of IT", "1", "TECH", "GR7", "J001", "A", "D04", false, true},
      {"J014", "Administrator", "4", "ADMIN", "GR3", "J003", "A", "D11", false, false},
      {"J015", "Receptionist", "4", "ADMIN", "GR2", "J014", "A", "D11", false, false},
      {"J016", "Cleaner", "9", "MAN", "GR1", "J018", "A", "D05", true, false},
      {"J017", "Porter", "9", "MAN", "GR1", "J018", "A", "D05", true, false},
      {"J018", "Facilities Supervisor", "5", "MAN", "GR3", "J013", "A", "D05", true, true},
      {"J019", "Electrician", "5", "MAN", "GR3", "J018", "A", "D05", true, false},
      {"J020", "Catering Assistant", "9", "MAN", "GR1", "J021", "A", "D10", true, false},
      {"J021", "Catering Manager", "1", "MAN", "GR5", "J001", "A", "D10", false, true},
      {"J022", "Care Assistant", "6", "MAN", "GR2", "J023", "A", "D12", true, false},
      {"J023", "Care Team Leader", "6", "MAN", "GR3", "J003", "A", "D12", false, true},
      {"J024", "Customer Adviser", "7", "ADMIN", "GR2", "J014", "A", "D11", false, false},
      {"J025", "Driver", "8", "MAN", "GR2", "J018", "A", "D05", true, false},
      {"J026", "Finance Officer", "4", "ADMIN", "GR4", "J002", "A", "D02", false, false},
      {"J027", "Accountant", "2", "PROF", "GR6", "J002", "A", "D02", false, false},
      {"J028", "Librarian", "2", "PROF", "GR5", "J010", "A", "D09", false, false},
      {"J029", "Library Assistant", "4", "ADMIN", "GR2", "J028", "A", "D09", false, false},
      {"J030", "Typist", "4", "ADMIN", "GR2", "J014", "D", "D11", false, false},
      {"J031", "Telephonist", "4", "ADMIN", "GR2", "J014", "D", "D11", false, false},
  };
  return rows;
}

const std::vector<Grade>& grades() {
  static const std::vector<Grade> rows = {
      {"GR1", "Grade 1", 3, 7},    {"GR2", "Grade 2", 6, 11},   {"GR3", "Grade 3", 10, 16},
      {"GR4", "Grade 4", 15, 22},  {"GR5", "Grade 5", 21, 28},  {"GR6", "Grade 6", 27, 35},
      {"GR7", "Grade 7", 34, 42},  {"GR8", "Grade 8", 41, 51},
  };
  return rows;
}

const std::vector<Pattern>& patterns() {
  static const std::vector<Pattern> rows = {
      {"STD", "Standard Monday to Friday", "", 0, "YYYYYNN", 37.5, false},
      {"STD35", "Monday to Friday, 35 hours", "NCEH", 0, "YYYYYNN", 35.0, false},
      {"4DAY", "Four days, Monday to Thursday", "NCEH", 0, "YYYYNNN", 30.0, false},
      {"MWF", "Monday, Wednesday and Friday", "NBDH", 0, "YNYNYNN", 22.5, false},
      {"WKEND", "Weekends only", "N", 0, "NNNNNYY", 16.0, false},
      {"TERM", "Term time only", "NADE", 0, "YYYYYNN", 30.0, false},
      {"ROT1", "Fixed week with Wednesday mornings", "", 1, "", 33.75, false},
      {"ROT2", "Nine-day fortnight", "NBDH NADE", 2, "", 37.5, false},
      {"ROT4", "Four-week shift rotation", "N", 4, "", 37.5, false},
      {"OLDSTD", "Former standard week (withdrawn)", "", 0, "YYYYYNN", 37.0, true},
  };
  return rows;
}

const std::vector<AbsenceType>& absenceTypes() {
  static const std::vector<AbsenceType> rows = {
      {"SICK", "Sickness", "N"},      {"IND", "Industrial injury", "N"},
      {"HOL", "Annual leave", "N"},   {"OTH", "Other leave", "Y"},
      {"MAT", "Maternity leave", "Y"}, {"PAT", "Paternity leave", "Y"},
      {"COMP", "Compassionate leave", "Y"}, {"TRAIN", "Training", ""},
      {"UNPD", "Unpaid leave", "Y"},
  };
  return rows;
}

const std::vector<AbsenceReason>& absenceReasons() {
  static const std::vector<AbsenceReason> rows = {
      {"COLD", "Cold or influenza", "SICK"},  {"BACK", "Back pain", "SICK"},
      {"STOM", "Stomach upset", "SICK"},      {"STRS", "Stress", "SICK"},
      {"MIGR", "Migraine", "SICK"},           {"OPER", "Operation", "SICK"},
      {"DENT", "Dental problem", "SICK"},     {"INJ", "Injury at work", "IND"},
      {"HOLS", "Annual holiday", "HOL"},      {"XMAS", "Christmas leave", "HOL"},
      {"APPT", "Medical appointment", "OTH"}, {"JURY", "Jury service", "OTH"},
      {"MOVE", "House move", "OTH"},          {"MATL", "Maternity leave", "MAT"},
      {"PATL", "Paternity leave", "PAT"},     {"FUN", "Funeral", "COMP"},
      {"FAM", "Family emergency", "COMP"},    {"CRS", "Training course", "TRAIN"},
      {"CONF", "Conference", "TRAIN"},        {"CAREB", "Career break", "UNPD"},
  };
  return rows;
}

const std::vector<WteRule>& wteRules() {
  static const std::vector<WteRule> rows = {
      {"FT", "Full time (factor 1)", "*", "", 1.0, 0.0, 0.0},
      {"PCT50", "Half time (50 per cent)", "P", "", 50.0, 0.0, 0.0},
      {"HRS375", "Hours against 37.5", "H", "U", 37.5, 0.0, 0.0},
      {"HRS35", "Hours against 35", "H", "D", 35.0, 0.0, 1.0},
      {"WKS52", "Weeks against 52", "W", "", 0.0, 52.0, 0.0},
      {"TT", "Hours and weeks (term time)", "C", "U", 37.5, 52.0, 100.0},
      {"EXPL", "Explicit factor on the post", "E", "", 0.0, 0.0, 0.0},
      {"DIV", "Divide by factor (not applied)", "/", "", 2.0, 0.0, 0.0},
      {"ZERO", "Hours against zero (no factor)", "H", "", 0.0, 0.0, 0.0},
  };
  return rows;
}

const std::vector<Code>& holidayGrades() {
  static const std::vector<Code> rows = {
      {"HG25", "25"}, {"HG28", "28"}, {"HG30", "30"}, {"HG33", "33"},
  };
  return rows;
}

const std::vector<HesaCodeTable>& hesaCodeTables() {
  static const std::vector<HesaCodeTable> tables = [] {
    std::vector<HesaCodeTable> t = {
        {"HESSEXORT",
         {{"01", "Bisexual"},
          {"02", "Gay man"},
          {"03", "Gay woman/lesbian"},
          {"04", "Heterosexual"},
          {"05", "Other"},
          {"98", "Information refused"}}},
        {"HESETHNIC",
         {{"10", "White"},
          {"15", "Gypsy or Traveller"},
          {"21", "Black or Black British - Caribbean"},
          {"22", "Black or Black British - African"},
          {"29", "Other Black background"},
          {"31", "Asian or Asian British - Indian"},
          {"32", "Asian or Asian British - Pakistani"},
          {"33", "Asian or Asian British - Bangladeshi"},
          {"34", "Chinese"},
          {"39", "Other Asian background"},
          {"41", "Mixed - White and Black Caribbean"},
          {"42", "Mixed - White and Black African"},
          {"43", "Mixed - White and Asian"},
          {"49", "Other Mixed background"},
          {"50", "Arab"},
          {"80", "Other ethnic background"},
          {"90", "Not known"},
          {"98", "Information refused"}}},
        {"HESNATION",
         {{"GB", "United Kingdom"},
          {"IE", "Ireland"},
          {"FR", "France"},
          {"DE", "Germany"},
          {"PL", "Poland"},
          {"ES", "Spain"},
          {"IT", "Italy"},
          {"PT", "Portugal"},
          {"RO", "Romania"},
          {"IN", "India"},
          {"PK", "Pakistan"},
          {"NG", "Nigeria"},
          {"CN", "China"},
          {"US", "United States"},
          {"AU", "Australia"},
          {"XX", "No second nationality"},
          {"ZZ", "Not known"}}},
        {"HESDISABLE",
         {{"00", "No known disability"},
          {"08", "Two or more impairments"},
          {"51", "Learning difference"},
          {"53", "Social or communication impairment"},
          {"54", "Long-standing illness or health condition"},
          {"55", "Mental health condition"},
          {"56", "Physical impairment"},
          {"57", "Deaf or serious hearing impairment"},
          {"58", "Blind or serious visual impairment"},
          {"96", "Disability not listed"},
          {"98", "Information refused"}}},
        {"HESRELBLF",
         {{"01", "No religion"},
          {"02", "Buddhist"},
          {"03", "Christian"},
          {"05", "Christian - Roman Catholic"},
          {"06", "Christian - Presbyterian Church in Ireland"},
          {"07", "Christian - Church of Ireland"},
          {"09", "Christian - other denomination"},
          {"10", "Hindu"},
          {"11", "Jewish"},
          {"12", "Muslim"},
          {"13", "Sikh"},
          {"14", "Spiritual"},
          {"80", "Any other religion or belief"},
          {"98", "Information refused"}}},
        {"HESPARLEAVE",
         {{"1", "No parental leave"},
          {"2", "Maternity leave"},
          {"3", "Paternity leave"},
          {"4", "Adoption leave"},
          {"5", "Shared parental leave"}}},
        {"HESABLWELSH",
         {{"1", "Able to teach through the medium of Welsh"},
          {"2", "Not able to teach through the medium of Welsh"},
          {"9", "Not applicable"}}},
        {"HESACTCHQUAL",
         {{"01", "Fellowship of the Higher Education Academy"},
          {"02", "Postgraduate certificate in HE teaching"},
          {"03", "Qualified teacher status"},
          {"04", "Other teaching qualification"},
          {"05", "No teaching qualification"},
          {"97", "Not applicable"},
          {"99", "Not known"}}},
        {"HESREGBODY",
         {{"01", "General Medical Council"},
          {"02", "Nursing and Midwifery Council"},
          {"03", "Health and Care Professions Council"},
          {"04", "Solicitors Regulation Authority"},
          {"05", "Royal Institute of British Architects"},
          {"06", "Institute of Chartered Accountants"},
          {"99", "Not applicable"}}},
        {"HESHQHELD",
         {{"D00", "Doctorate"},
          {"L00", "Other postgraduate qualification"},
          {"M00", "Masters degree"},
          {"H00", "First degree"},
          {"J00", "Other higher education qualification"},
          {"P00", "A level or equivalent"},
          {"Q00", "GCSE or equivalent"},
          {"X00", "No formal qualification"},
          {"X99", "Not known"}}},
        {"HESCURACCDIS",
         {{"101", "Clinical medicine"},
          {"106", "Nursing and allied health"},
          {"121", "Computer science"},
          {"122", "Biosciences"},
          {"126", "Chemistry"},
          {"127", "Physics"},
          {"133", "Business and management"},
          {"137", "Mechanical engineering"},
          {"138", "History"},
          {"143", "Law"},
          {"145", "Education"},
          {"999", "Not applicable"}}},
        {"HESECRSTAT",
         {{"1", "Early career researcher"}, {"2", "Not an early career researcher"}, {"9", "Not applicable"}}},
        {"HESRESAST", {{"1", "Research assistant"}, {"2", "Not a research assistant"}, {"9", "Not applicable"}}},
        {"HESCLINARD",
         {{"A0", "Clinical professor"},
          {"B0", "Clinical reader or senior lecturer"},
          {"C0", "Clinical lecturer"},
          {"D0", "Clinical research fellow"},
          {"Z0", "Not a clinical academic"}}},
        {"HESPREVEMP",
         {{"01", "Higher education provider in the UK"},
          {"02", "Other education"},
          {"03", "National Health Service"},
          {"04", "Private industry or commerce"},
          {"05", "Other public sector"},
          {"06", "Self-employed"},
          {"07", "Unemployed"},
          {"08", "Student"},
          {"98", "Not known"}}},
        {"HESPREVHEI",
         {{"0001", "The Open University"},
          {"0117", "University of Bristol"},
          {"0123", "University of Leeds"},
          {"0155", "University of Manchester"},
          {"0159", "Queen's University Belfast"},
          {"0162", "Cardiff University"},
          {"0189", "Ulster University"},
          {"9999", "Not applicable"}}},
        {"HESACTLEAVE",
         {{"01", "Employment in another UK higher education provider"},
          {"02", "Other education"},
          {"03", "National Health Service"},
          {"04", "Private industry or commerce"},
          {"05", "Other public sector"},
          {"06", "Retired"},
          {"07", "Unemployed"},
          {"08", "Deceased"},
          {"97", "Not applicable (still in post)"},
          {"98", "Not known"}}},
        {"HESLOCLEAVE",
         {{"1", "United Kingdom"},
          {"2", "European Union"},
          {"3", "Other overseas"},
          {"8", "Not known"},
          {"9", "Not applicable (still in post)"}}},
        {"HESCAMPID", {{"A", "Main campus"}, {"B", "City campus"}, {"C", "Health sciences campus"}}},
        {"HESTERMS", {{"1", "Open-ended/Permanent"}, {"2", "Fixed-term contract"}, {"3", "Atypical"}}},
        {"HESMOEMP",
         {{"1", "Full-time"},
          {"2", "Part-time"},
          {"3", "Full-time term-time only"},
          {"4", "Part-time term-time only"}}},
        {"HESACEMPFUN",
         {{"1", "Teaching only"},
          {"2", "Research only"},
          {"3", "Teaching and research"},
          {"4", "Neither teaching nor research"},
          {"9", "Not an academic contract"}}},
        {"HESTCHWLH",
         {{"1", "Up to 25 per cent"},
          {"2", "26 to 50 per cent"},
          {"3", "51 to 75 per cent"},
          {"4", "Over 75 per cent"},
          {"9", "Not applicable"}}},
        {"HESHEIJOINT",
         {{"0000", "Not a joint appointment"},
          {"0123", "University of Leeds"},
          {"0155", "University of Manchester"},
          {"0159", "Queen's University Belfast"}}},
        {"HESLEVELS",
         {{"A0", "Head of provider"},
          {"B0", "Senior management team"},
          {"F1", "Professor"},
          {"I0", "Senior lecturer or senior researcher"},
          {"J0", "Lecturer or researcher"},
          {"K0", "Research assistant"},
          {"L0", "Professional and technical"},
          {"M0", "Administrative"},
          {"N0", "Manual"},
          {"O0", "Other"}}},
        {"HESRESCON",
         {{"01", "Resignation"},
          {"02", "Dismissal"},
          {"03", "Redundancy"},
          {"04", "End of fixed-term contract"},
          {"05", "Retirement"},
          {"06", "Death"},
          {"07", "Transfer to another provider"},
          {"97", "Not applicable (contract continues)"}}},
        {"HESSOBS",
         {{"01", "Funding council"},
          {"02", "Research council"},
          {"03", "UK charity"},
          {"04", "UK government"},
          {"05", "UK industry"},
          {"06", "European Union"},
          {"07", "Other overseas"},
          {"08", "Other source"},
          {"09", "Provider's own funds"},
          {"99", "Not applicable"}}},
        {"HESPSCAG",
         {{"01", "Managers"},
          {"02", "Professional"},
          {"03", "Associate professional"},
          {"04", "Administrative"},
          {"05", "Skilled trades"},
          {"06", "Caring and service"},
          {"07", "Sales and customer service"},
          {"08", "Operatives"},
          {"09", "Elementary"},
          {"99", "Not applicable (academic)"}}},
        {"HESSPOINT", {}},
        {"HESSALREF",
         {{"A", "National pay spine"}, {"B", "Clinical scale"}, {"C", "Spot salary"}, {"D", "Off scale"}}},
        {"HESNHSCON",
         {{"1", "Substantive NHS contract"}, {"2", "Honorary NHS contract"}, {"3", "No NHS contract"}}},
        {"HESNHSCONGR",
         {{"CG01", "Consultant"},
          {"CG02", "Specialty doctor"},
          {"CG03", "Specialty registrar"},
          {"CG09", "Not applicable"}}},
        {"HESHSPEC",
         {{"100", "Anaesthetics"},
          {"110", "Cardiology"},
          {"120", "General surgery"},
          {"130", "Paediatrics"},
          {"140", "Psychiatry"},
          {"150", "General practice"},
          {"999", "Not applicable"}}},
        {"HESCLINICAL", {{"1", "Clinical"}, {"2", "Non-clinical"}}},
        {"HESCLINSUB",
         {{"CS01", "Medicine"},
          {"CS02", "Dentistry"},
          {"CS03", "Nursing"},
          {"CS04", "Veterinary science"},
          {"CS99", "Not applicable"}}},
        {"HESACTSOC",
         {{"1241", "Health services managers"},
          {"2119", "Natural and social science professionals"},
          {"2311", "Higher education teaching professionals"},
          {"2424", "Business and financial project managers"},
          {"3119", "Science and engineering technicians"},
          {"4113", "Local government administrative occupations"},
          {"4159", "Other administrative occupations"},
          {"5241", "Electricians"},
          {"6145", "Care workers"},
          {"9233", "Cleaners and domestics"}}},
        {"HESCCENTRE",
         {{"101", "Clinical medicine"},
          {"106", "Nursing and allied health"},
          {"121", "Computer science"},
          {"133", "Business and management"},
          {"145", "Education"},
          {"201", "Administration and central services"},
          {"202", "Central libraries and information services"},
          {"203", "Premises"},
          {"204", "Residences and catering"}}},
    };
    // The national pay spine points, "01" to "51".
    static char points[51][3];
    for (HesaCodeTable& table : t) {
      if (std::string(table.table) != "HESSPOINT") continue;
      for (int i = 0; i < 51; ++i) {
        std::snprintf(points[i], sizeof points[i], "%02d", i + 1);
        table.rows.push_back({points[i], "Pay spine point"});
      }
    }
    return t;
  }();
  return tables;
}

const std::vector<const char*>& maleForenames() {
  static const std::vector<const char*> names = {
      "Oliver", "George", "Harry",  "Jack",    "Jacob",   "Noah",    "Charlie", "Muhammad", "Thomas",  "Oscar",
      "William", "James", "Henry",  "Leo",     "Alfie",   "Joshua",  "Freddie", "Archie",   "Ethan",   "Isaac",
      "Alexander", "Joseph", "Edward", "Samuel", "Max",   "Daniel",  "Arthur",  "Lucas",    "Mohammed", "Logan",
      "David",  "John",    "Michael", "Paul",   "Mark",    "Andrew",  "Stephen", "Richard",  "Peter",   "Christopher",
      "Robert", "Ian",     "Gary",   "Kevin",   "Simon",   "Patrick", "Sean",    "Connor",   "Ciaran",  "Declan",
  };
  return names;
}

const std::vector<const char*>& femaleForenames() {
  static const std::vector<const char*> names = {
      "Olivia",  "Amelia",  "Isla",   "Ava",     "Emily",   "Isabella", "Mia",     "Poppy",     "Ella",   "Lily",
      "Sophie",  "Grace",   "Evie",   "Jessica", "Charlotte", "Ruby",   "Chloe",   "Sophia",    "Freya",  "Lucy",
      "Emma",    "Sarah",   "Laura",  "Rebecca", "Hannah",  "Rachel",   "Claire",  "Helen",     "Karen",  "Susan",
      "Julie",   "Elizabeth", "Margaret", "Catherine", "Anne", "Mary",    "Jennifer", "Nicola",   "Joanne", "Louise",
      "Siobhan", "Aoife",   "Niamh",  "Orla",    "Ciara",   "Priya",    "Aisha",   "Fatima",    "Zara",   "Megan",
  };
  return names;
}

const std::vector<const char*>& surnames() {
  static const std::vector<const char*> names = {
      "Smith",    "Jones",    "Williams", "Taylor",   "Brown",     "Davies",   "Evans",    "Wilson",   "Thomas",
      "Johnson",  "Roberts",  "Robinson", "Thompson", "Wright",    "Walker",   "White",    "Edwards",  "Hughes",
      "Green",    "Hall",     "Lewis",    "Harris",   "Clarke",    "Patel",    "Jackson",  "Wood",     "Turner",
      "Martin",   "Cooper",   "Hill",     "Ward",     "Morris",    "Moore",    "Clark",    "Lee",      "King",
      "Baker",    "Harrison", "Morgan",   "Allen",    "James",     "Scott",    "Phillips", "Watson",   "Davis",
      "Parker",   "Price",    "Bennett",  "Young",    "Griffiths", "Mitchell", "Kelly",    "Cook",     "Carter",
      "Richardson", "Bailey", "Collins",  "Bell",     "Shaw",      "Murphy",   "Miller",   "Cox",      "Richards",
      "Khan",     "Marshall", "Anderson", "Simpson",  "Ellis",     "Adams",    "Singh",    "Begum",    "Wilkinson",
      "Foster",   "Chapman",  "Powell",   "Webb",     "Rogers",    "Gray",     "Mason",    "Ali",      "Hunt",
      "Hussain",  "Campbell", "Matthews", "Owen",     "Palmer",    "Holmes",   "Mills",    "Barnes",   "Knight",
      "Lloyd",    "Butler",   "Russell",  "Barker",   "Fisher",    "Stevens",  "Jenkins",  "Murray",   "Dixon",
      "Harvey",   "O'Neill",  "O'Brien",  "McLaughlin", "Doherty", "Quinn",    "Gallagher", "McCann",  "Byrne",
  };
  return names;
}

const std::vector<const char*>& streets() {
  static const std::vector<const char*> names = {
      "High Street",  "Church Road",  "Station Road", "Victoria Road", "Park Avenue",     "Green Lane",
      "Manor Road",   "Mill Lane",    "Queen Street", "King Street",   "The Crescent",    "Grange Road",
      "Main Street",  "Windsor Road", "School Lane",  "Orchard Close", "Oak Drive",       "Beech Grove",
      "Springfield Road", "Albert Road", "York Road", "Chapel Street", "Meadow View",     "North Parade",
  };
  return names;
}

const std::vector<Town>& towns(int company) {
  static const std::vector<Town> england = {
      {"Leeds", "West Yorkshire", "LS"},       {"Manchester", "Greater Manchester", "M"},
      {"Birmingham", "West Midlands", "B"},    {"Bristol", "", "BS"},
      {"Nottingham", "Nottinghamshire", "NG"}, {"Sheffield", "South Yorkshire", "S"},
      {"Cardiff", "South Glamorgan", "CF"},    {"Swansea", "West Glamorgan", "SA"},
      {"Newcastle upon Tyne", "Tyne and Wear", "NE"}, {"Liverpool", "Merseyside", "L"},
      {"York", "North Yorkshire", "YO"},       {"Oxford", "Oxfordshire", "OX"},
      {"Cambridge", "Cambridgeshire", "CB"},   {"Norwich", "Norfolk", "NR"},
      {"Exeter", "Devon", "EX"},               {"Brighton", "East Sussex", "BN"},
      {"Leicester", "Leicestershire", "LE"},   {"Coventry", "West Midlands", "CV"},
      {"Reading", "Berkshire", "RG"},          {"London", "", "SE"},
  };
  static const std::vector<Town> northernIreland = {
      {"Belfast", "County Antrim", "BT"},      {"Derry", "County Londonderry", "BT"},
      {"Lisburn", "County Antrim", "BT"},      {"Newry", "County Down", "BT"},
      {"Armagh", "County Armagh", "BT"},       {"Omagh", "County Tyrone", "BT"},
      {"Enniskillen", "County Fermanagh", "BT"}, {"Coleraine", "County Londonderry", "BT"},
      {"Bangor", "County Down", "BT"},         {"Ballymena", "County Antrim", "BT"},
  };
  return company % 2 == 1 ? northernIreland : england;
}

std::string companyCode(int company) {
  char code[16];
  std::snprintf(code, sizeof code, "ORV%02d", company + 1);
  return code;
}

std::string companyName(int company) {
  static const char* names[] = {"Orvalis University", "Orvalis Services NI", "Orvalis Trading",
                                "Orvalis Care Homes"};
  std::string name = names[company % 4];
  if (company >= 4) name += " " + std::to_string(company / 4 + 1);
  return name;
}

}  // namespace orvalis::demo
