#pragma once
// In the place of MFC's header of its arrays.

#include <afx.h>

class CStringArray {};
