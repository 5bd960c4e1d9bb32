// In the place of MFC's header for the source of an extension module's entry routine. It defines
// something, so that two sources of a module cannot include it.

#include <afxwin.h>

int mockOfAfxdllxIsIncludedOnce;
