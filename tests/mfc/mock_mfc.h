#pragma once
// The calls that the mock of MFC's DLL has recorded, and how it answers the next ones.

#include <afxwin.h>

#include <string>
#include <vector>

struct MockMfc {
  enum class Allocation { Succeeds, Throws, ReturnsNull };

  std::vector<std::string> steps;
  AFX_EXTENSION_MODULE* record = nullptr;  // of the last call
  HMODULE module = nullptr;                // of the last initialisation
  bool refuses = false;
  Allocation allocation = Allocation::Succeeds;
};

MOCK_MFC MockMfc& mockMfc();
