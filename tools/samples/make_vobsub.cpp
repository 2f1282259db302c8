// Writes a small VobSub pair to look at: make_vobsub FILE.idx
#include <stdio.h>

#include "tools/samples/VobSubMaker.h"

int main(int argc, char** argv) {
    if (argc != 2) {
        fprintf(stderr, "usage: %s FILE.idx\n", argv[0]);
        return 2;
    }
    if (samples::demoVobSub().write(argv[1])) return 0;
    fprintf(stderr, "%s: %s and the .sub file beside it could not be written\n", argv[0], argv[1]);
    return 1;
}
