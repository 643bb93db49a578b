/* An error callback that keeps a log. A callback gets the record alone, so the log
 * is one for the process, with a lock: threads of one call share it. */
#include <pthread.h>

#include "frontend.h"

static pthread_mutex_t mutex = PTHREAD_MUTEX_INITIALIZER;
static struct error_log errors;
static uint32_t mode_before;
static kef_vtm_error_callback callback_before;

static int keep(kef_vtm_error_record *record) {
    pthread_mutex_lock(&mutex);
    if (errors.count < KEPT_ERRORS) errors.kept[errors.count] = *record;
    ++errors.count;
    pthread_mutex_unlock(&mutex);
    return 0; /* go on: the results stay as computed */
}

void watch_errors(void) {
    errors.count = 0;
    mode_before = kef_vtm_kernel_GetMode();
    callback_before = kef_vtm_kernel_SetErrorCallBack(keep);
    kef_vtm_kernel_SetMode(VTM_ERRMODE_CALLBACK);
}

const struct error_log *watched_errors(void) {
    kef_vtm_kernel_SetErrorCallBack(callback_before); /* first: it changes the mode word */
    restore_mode(mode_before);
    return &errors;
}
