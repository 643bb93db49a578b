// The meaning of each status code, expanded from the lists of the public headers; a code
// that stands twice in a list does not compile.
#include "kef_fit.h"
#include "kef_rng.h"
#include "kef_stats.h"
#include "kef_vm.h"

namespace {

constexpr const char* unknown = "unknown status";

}  // namespace

#define KEF_STATUS_ROW(name, code, meaning) \
    case name: return meaning;

const char* kef_vtm_status_text(int32_t status) {
    switch (status) {
#include "kef_vm_status.def"
    }
    return unknown;
}

const char* kef_vts_status_text(int32_t status) {
    switch (status) {
#include "kef_rng_status.def"
    }
    return unknown;
}

const char* kef_ss_status_text(int32_t status) {
    switch (status) {
#include "kef_stats_status.def"
    }
    return unknown;
}

const char* kef_df_status_text(int32_t status) {
    switch (status) {
#include "kef_fit_status.def"
    }
    return unknown;
}
