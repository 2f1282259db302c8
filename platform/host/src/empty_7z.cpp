// The six names that Debian's libbacktrace expects of p7zip's 7z.so. Nothing here reads compressed symbol tables.

#define VX_EXPORT extern "C" __attribute__((visibility("default")))

VX_EXPORT void Crc64GenerateTable();
VX_EXPORT void CrcGenerateTable();
VX_EXPORT int XzUnpacker_Code();
VX_EXPORT void XzUnpacker_Construct();
VX_EXPORT void XzUnpacker_Free();
VX_EXPORT int XzUnpacker_IsStreamWasFinished();

void Crc64GenerateTable() {}
void CrcGenerateTable() {}
int XzUnpacker_Code() { return 1; }  // an error: nothing was unpacked
void XzUnpacker_Construct() {}
void XzUnpacker_Free() {}
int XzUnpacker_IsStreamWasFinished() { return 0; }
