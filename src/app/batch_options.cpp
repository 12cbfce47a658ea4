// The batch options that depend on the environment.
#include "app/batch_options.h"

#include <cstdlib>

#include "base/status.h"

namespace quarnel {

namespace {

[[noreturn]] void BadOption(const std::string& text, const std::string& hint = {}) {
  Fail(Status::kBadOption, Stream::kStderr, "quarnel: " + text + "\n",
       hint.empty() ? "quarnel: 'quarnel --help' lists every option" : hint);
}

}  // namespace

void CheckBatchOptions(const BatchOptions& o) {
  if (!o.chain.empty() && o.eachChain) BadOption("--chain and --each-chain exclude each other");
  if (o.resume && o.out.empty()) BadOption("--resume needs --out FILE");
  if (o.resume && o.format == ResultFormat::kClassic)
    BadOption("--resume needs --format tsv, json or residues",
              "quarnel: classic report lines do not say which input and chain they came from");
  if (!o.featuresFile.empty() && o.mode != DecisionMode::kCath)
    BadOption("--features needs --mode cath", "quarnel: only the accuracy mode has candidate cuts to write");
  if (o.mode == DecisionMode::kCath && o.params.MaxNumDom != kDefaultMaxNumDom)
    BadOption("--mode cath decides the number of domains itself: -md and -ex do not apply");
  if (o.inputs.empty() && o.listFile.empty())
    BadOption("no input: name structure files, folders or PDB codes, or --list FILE");
}

bool UsesExternalDssp(const BatchOptions& options) {
  return options.dssp == DsspChoice::kExternal ||
         (options.dssp == DsspChoice::kAuto && std::getenv("DSSP_PATH") != nullptr);
}

bool UsesDsspLibrary(const BatchOptions& options) {
  return options.params.FlagSS == 1 && !UsesExternalDssp(options);
}

ResultSettings SettingsOf(const BatchOptions& options) {
  return ResultSettings{options.given, options.filterPlddt, options.minPlddt, UsesExternalDssp(options),
                        options.mode};
}

}  // namespace quarnel
