/* Says which member of the library runs. */
#include <kef_version.h>
#include <stdio.h>

int main(void) { return puts(kef_member()) < 0; }
