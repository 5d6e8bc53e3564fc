// Loads the libraries that it was linked with.
#include <unistd.h>

int main() { _exit(0); }
