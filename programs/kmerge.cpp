// kmerge puts a sentence file and the anchors of a page together into a page. docs/pipeline.md
// describes the files and what is done with markup that a translation has put out of order.
#include "programs/common/program.h"
#include "programs/document/merging.h"
#include "programs/frame/job_files.h"
#include "programs/kinds.h"

namespace klib::programs {
namespace {

void merge(const char *sentences, const char *anchors, const char *result) {
  const std::string inputs[] = {sentences, anchors, with_type(anchors, "anx")};
  const std::string outputs[] = {result};
  check_job_files(inputs, outputs);
  merge_document(find_kind, sentences, anchors, result);
}

constexpr const char *purpose =
    "Puts the sentences of OUT.kti and the anchors of JOB.anc (with its index JOB.anx)\n"
    "together into the page RESULT. Markup that a translation has put out of order is\n"
    "repaired and reported. With '-' for RESULT, standard output is written.\n";

constexpr Parameter parameters[] = {
    {"LANGUAGE", "NAME", "the language of OUT.kti (GERMAN)"},
};

}  // namespace

const Program kmerge = {.name = "kmerge",
                        .files = "OUT.kti JOB.anc RESULT ...",
                        .purpose = purpose,
                        .parameters = parameters,
                        .job = job<merge, 3>};

}  // namespace klib::programs
