#include "platform/linux/names/native_path.h"

#include "support/temporary_folder.h"

namespace {

using platform::native::NativePath;

TEST(NativePath, MapsPathText) {
  const std::tuple<const char*, const char*, bool> cases[] = {
      {"C:", "/", false},
      {"C:x", "x", false},
      {"{:x", "{:x", false},
      {"\\etc\\", "/etc", true},
      {"/", "/", false},
      {"a\\\\b//c\\", "a/b/c", true},
      {".\\..\\x", "../x", false},
      {"..\\..\\a\\..\\..\\x", "../../../x", false},
      {"a\\b\\..\\..", ".", false},
      {"a\\.", "a", false},
      {"a\\..\\", ".", true},
      {"...\\.x\\..y", ".../.x/..y", false},
      {"C:\\a\\..\\..\\x", "/x", false},
      {"C:..\\x", "../x", false},
      {"a\uF05Cb\\c", "a\\b/c", false},
      {"\xFF\xFE", "\xFF\xFE", false},
      {"\\\\?\\C:\\x", "/x", false},
  };
  for (const auto& [text, native, trailing] : cases) {
    const NativePath path(text);
    EXPECT_TRUE(path.valid()) << text;
    EXPECT_STREQ(path.c_str(), native) << text;
    EXPECT_EQ(path.size(), std::string(native).size()) << text;
    EXPECT_EQ(path.hadTrailingSeparator(), trailing) << text;
  }
}

TEST(NativePath, RefusesWhatNamesNothing) {
  EXPECT_EQ(NativePath(nullptr).error(), ERROR_PATH_NOT_FOUND);
  EXPECT_EQ(NativePath("").error(), ERROR_PATH_NOT_FOUND);
  EXPECT_EQ(NativePath("Q:\\x").error(), ERROR_PATH_NOT_FOUND);
  EXPECT_EQ(NativePath("\\\\nobody\\share\\x").error(), ERROR_BAD_NETPATH);
  EXPECT_EQ(NativePath("\\\\nobody").error(), ERROR_BAD_NETPATH);
  const std::string tooLong(PATH_MAX, 'x');
  EXPECT_EQ(NativePath(tooLong.c_str()).error(), ERROR_FILENAME_EXCED_RANGE);
  EXPECT_EQ(NativePath(tooLong.c_str() + 1).error(), ERROR_SUCCESS);
}

TEST(NativePath, FollowsDefinedDevices) {
  const support::TemporaryFolder folder;
  const std::string native = folder.path().string();
  ASSERT_TRUE(DefineDosDeviceA(0, "T:", native.c_str()));
  EXPECT_EQ(NativePath("t:\\a").c_str(), native + "/a");
  EXPECT_EQ(NativePath("T:a").c_str(), native + "/a");
  EXPECT_EQ(NativePath("T:").c_str(), native);
  EXPECT_EQ(NativePath("T:\\a\\..\\..\\..\\b").c_str(), native + "/b");

  ASSERT_TRUE(DefineDosDeviceA(DDD_RAW_TARGET_PATH, "UNC\\srv\\share", "\\??\\T:\\deep"));
  EXPECT_EQ(NativePath("\\\\SRV\\Share\\x").c_str(), native + "/deep/x");
  EXPECT_EQ(NativePath("\\\\?\\UNC\\srv\\share\\x").c_str(), native + "/deep/x");

  ASSERT_TRUE(DefineDosDeviceA(DDD_RAW_TARGET_PATH, "U:", "\\??\\UNC\\srv\\share\\in"));
  EXPECT_EQ(NativePath("U:\\x").c_str(), native + "/deep/in/x");
  EXPECT_TRUE(DefineDosDeviceA(DDD_REMOVE_DEFINITION, "U:", nullptr));

  // A later definition hides the earlier one until it is removed.
  ASSERT_TRUE(DefineDosDeviceA(0, "T:", "/other"));
  EXPECT_STREQ(NativePath("T:\\a").c_str(), "/other/a");
  EXPECT_TRUE(DefineDosDeviceA(DDD_REMOVE_DEFINITION, "T:", nullptr));
  EXPECT_EQ(NativePath("T:\\a").c_str(), native + "/a");
  EXPECT_TRUE(DefineDosDeviceA(DDD_REMOVE_DEFINITION, "T:", nullptr));
  EXPECT_FALSE(NativePath("T:\\a").valid());
  EXPECT_FALSE(DefineDosDeviceA(DDD_REMOVE_DEFINITION, "T:", nullptr));
  EXPECT_TRUE(DefineDosDeviceA(DDD_REMOVE_DEFINITION, "UNC\\srv\\share", nullptr));

  for (const char* device : {"T", "TT:", "1:", "UNC\\srv", "UNC\\srv\\a\\b"}) {
    EXPECT_FALSE(DefineDosDeviceA(0, device, "/")) << device;
  }
  EXPECT_FALSE(DefineDosDeviceA(0, "T:", "relative"));
}

}  // namespace
