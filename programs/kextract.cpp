// kextract takes a page apart: its sentences with format codes, their words for the translation,
// and everything else as anchors. docs/pipeline.md describes the files.
#include "programs/common/program.h"
#include "programs/document/extraction.h"
#include "programs/document/wishes.h"
#include "programs/frame/job_files.h"
#include "programs/kinds.h"

namespace klib::programs {
namespace {

const char *encoding;  // the value of --encoding
bool translate_code;
const char *offer;  // the value of --offer
const char *placeable;

void extract(const char *sentences, const char *page) {
  const std::string inputs[] = {page};
  const std::string outputs[] = {sentences, with_type(sentences, "txt"),
                                 with_type(sentences, "anc"), with_type(sentences, "anx")};
  check_job_files(inputs, outputs);
  check_family(sentences);
  check_wishes("kextract", offer, placeable);
  const DocumentKind &kind = kind_of_file(page);
  extract_document(kind, kind.read(page, encoding ? encoding : ""),
                   {.placeable = placeable ? placeable : "",
                    .translate_code = translate_code,
                    .offer = offer ? offer : ""},
                   sentences);
}

constexpr const char *purpose =
    "Takes the HTML page PAGE apart and writes\n"
    "  JOB.kti           its sentences, numbered, with format codes\n"
    "  JOB.txt           their words, one sentence per line, in UTF-8, for the translation\n"
    "  JOB.anc, JOB.anx  everything else: anchor text and anchor index\n"
    "With '-' for PAGE, standard input is read.\n";

constexpr Parameter parameters[] = {
    {"LANGUAGE", "NAME", "the language of the page (GERMAN)"},
    {"KTI-START", "NUMBER", "the number of the first sentence (0)"},
    {"KTI-STEP", "NUMBER", "the distance to the next number (1)"},
    {"KTI-WIDTH", "NUMBER", "the width at which JOB.kti is wrapped (it is not)"},
};

constexpr Option options[] = {
    {"offer", "NAMES", &offer,
     "offer the text of textarea, pre and svg, too: those named, commas between"},
    {"placeable", "FORM", &placeable,
     "put a word into JOB.txt for each image, formula or other atom in a sentence;\n"
     "'#' in FORM is its number there"},
    {"translate-code", nullptr, &translate_code,
     "offer the text of code, kbd, samp and tt for translation, too"},
    {"encoding", "NAME", &encoding, "the encoding of a page that does not declare one (utf-8)"},
};

}  // namespace

const Program kextract = {.name = "kextract",
                          .files = "JOB.kti PAGE ...",
                          .purpose = purpose,
                          .parameters = parameters,
                          .options = options,
                          .job = job<extract, 2>};

}  // namespace klib::programs
