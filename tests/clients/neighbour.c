/* A library with static thread-local storage, of which a process has little. */
static __thread int words[16] __attribute__((tls_model("initial-exec")));

int *neighbour(void);
int *neighbour(void) { return words; }
