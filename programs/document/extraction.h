// Takes a document apart into the files of a job.
#pragma once

#include "programs/document/kind.h"

namespace klib::programs {

// Writes JOB.kti, `name`, and beside it JOB.txt, JOB.anc and JOB.anx. None of them is there under
// its name before all are complete. Failures end the job (fail()).
void extract_document(const DocumentKind &kind, const Document &document, const Wishes &wishes,
                      const char *name);

}  // namespace klib::programs
