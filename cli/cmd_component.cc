// Commands over the component surface: the creatable classes and the
// report reference resolution.
//
//   orvalis classes                    one line per class: identifier, TAB,
//                                      its public methods joined by ", ",
//                                      TAB, the references that reach it
//                                      ("POST_REVIEW, 91 (PNL)": a number
//                                      in the personnel module only; "-"
//                                      for none: created by identifier only),
//                                      and, when the class has one, TAB
//                                      and a note (what OpenObject does)
//   orvalis resolve MODULE REFERENCE   identifier, TAB, class name, TAB,
//                                      module after resolution (empty
//                                      fields left empty); exit 1 when no
//                                      class serves the reference

#include <iostream>
#include <memory>
#include <string>
#include <vector>

#include "cli/cli_context.h"
#include "component/class_registry.h"
#include "component/report_references.h"
#include "runtime/basic_string.h"

namespace orvalis::cli {
namespace {

void setup(CLI::App& app, CliContext& context) {
  auto* classes = app.add_subcommand("classes", "list the creatable report classes and their public methods");
  classes->callback([] {
    for (const ReportClassInfo& info : reportClasses()) {
      const std::vector<std::string> references = referencesReaching(info.classId());
      std::cout << info.classId() << "\t" << join(info.methods, ", ") << "\t"
                << (references.empty() ? std::string("-") : join(references, ", "));
      const std::string note = classNote(info.classId());
      if (!note.empty()) std::cout << "\t" << note;
      std::cout << "\n";
    }
  });

  auto args = std::make_shared<std::pair<std::string, std::string>>();
  auto* resolve = app.add_subcommand("resolve", "resolve a report reference to its business-object class");
  resolve->add_option("MODULE", args->first, "module code: PNL, PAY or ADM")->required();
  resolve->add_option("REFERENCE", args->second, "report name, driving table or report number")->required();
  resolve->callback([&context, args] {
    const std::string id = gfncGetBusObjectID(args->first, args->second);
    std::string module = args->first;
    const std::string className = gfncGetBusClassName(module, args->second);
    std::cout << id << "\t" << className << "\t" << module << "\n";
    context.exitCode = className.empty() ? 1 : 0;
  });
}

const RegisterCommands registered({"classes", "resolve"}, setup);

}  // namespace
}  // namespace orvalis::cli
