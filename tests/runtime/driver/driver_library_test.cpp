#include "support/built_driver.h"

#include <dlfcn.h>

TEST(DriverLibrary, LoadsTheBuiltDriverAndFindsItsFunctions)
{
    qint32 type = 0;
    builtDriver().getProtocolType(&type);
    EXPECT_EQ(type, 1);
    QString page;
    builtDriver().getDriverPropertyPage(page);
    EXPECT_EQ(page.toStdString(), "0_0");
    builtDriver().setDriverPropertyPage(page);
    EXPECT_EQ(page.toStdString(), "");
}

TEST(DriverLibrary, NamesTheFileThatIsMissing)
{
    const std::string text = usageError([] { DriverLibrary("/nowhere/driver.so"); });
    EXPECT_NE(text.find("cannot load the driver: /nowhere/driver.so"), std::string::npos) << text;
    EXPECT_NE(text.find("--library FILE"), std::string::npos) << text;
}

TEST(DriverLibrary, LooksForABareNameInTheCurrentFolderOnly)
{
    const std::string text = usageError([] { DriverLibrary("libc.so.6"); });
    EXPECT_NE(text.find("./libc.so.6"), std::string::npos) << text;
}

TEST(DriverLibrary, NamesTheFunctionThatALibraryLacks)
{
    Dl_info info; // of the C library, which every program has
    void *symbol = dlsym(RTLD_DEFAULT, "gnu_get_libc_version");
    ASSERT_NE(symbol, nullptr);
    ASSERT_NE(dladdr(symbol, &info), 0);
    const std::string file = info.dli_fname;
    const std::string text = usageError([&] { DriverLibrary library(file); });
    EXPECT_EQ(text, file + " is not a driver for this program: it lacks the function intf_getProtocolType");
}
