/* The few constants that the version record of the Windows build names, for a resource compiler that comes without the
   system's headers. */
#define VS_VERSION_INFO 1
#define VS_FFI_FILEFLAGSMASK 0x3F
#define VOS_NT_WINDOWS32 0x40004
#define VFT_APP 1
#define VFT2_UNKNOWN 0
