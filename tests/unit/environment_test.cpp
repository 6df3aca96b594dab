// The records of the directory: plain values with maps that keep the first value under a key.
#include <gtest/gtest.h>

#include <climits>
#include <cstdlib>
#include <string>
#include <type_traits>

#include "morvenn/net/mvserverproxy/admin/EnvironmentInfo.h"
#include "morvenn/net/mvserverproxy/util/MvServerCppBindingLogger.h"
#include "testing/LogFile.h"

using namespace Morvenn::Net::MvServerProxy;
using namespace Morvenn::Net::MvServerProxy::Admin;

namespace {

Service serviceWith(const std::string& key, const std::string& value) {
    Service service;
    service.setProperty(key, value);
    return service;
}

std::string property(Service service, const std::string& key) {
    return service.getProperty(key);
}

}  // namespace

TEST(Service, StartsWithoutProperties) {
    Service service;
    service.setProperty("a", "1");
    EXPECT_EQ(service.getProperty("a"), "1");
}

TEST(Service, FirstValueStoredUnderAKeyStays) {
    Service service;
    service.setProperty("a", "1");
    service.setProperty("a", "2");
    EXPECT_EQ(service.getProperty("a"), "1");
}

TEST(Service, ReadingAMissingPropertyInsertsAnEmptyOne) {
    Service service;
    EXPECT_EQ(service.getProperty("a"), "");
    service.setProperty("a", "too late");
    EXPECT_EQ(service.getProperty("a"), "");
}

TEST(Service, KeysAreComparedByteForByte) {
    Service service;
    service.setProperty("key", "1");
    service.setProperty("Key", "2");
    service.setProperty("key ", "3");
    service.setProperty(std::string("key\0", 4), "4");
    service.setProperty("", "5");
    EXPECT_EQ(service.getProperty("key"), "1");
    EXPECT_EQ(service.getProperty("Key"), "2");
    EXPECT_EQ(service.getProperty("key "), "3");
    EXPECT_EQ(service.getProperty(std::string("key\0", 4)), "4");
    EXPECT_EQ(service.getProperty(""), "5");
}

TEST(Service, ReturnedReferenceStaysValidWhileOthersAreAdded) {
    Service service = serviceWith("a", "1");
    const std::string& value = service.getProperty("a");
    for (int i = 0; i < 1000; ++i) {
        service.setProperty("key" + std::to_string(i), "x");
    }
    EXPECT_EQ(value, "1");
    EXPECT_EQ(&value, &service.getProperty("a"));
}

TEST(Service, CopiesAreDeep) {
    Service original = serviceWith("a", "1");
    Service copy(original);
    copy.setProperty("b", "2");
    original.setProperty("b", "other");
    EXPECT_EQ(copy.getProperty("a"), "1");
    EXPECT_EQ(copy.getProperty("b"), "2");
    EXPECT_EQ(original.getProperty("b"), "other");
}

TEST(Service, AssignmentReplacesAllProperties) {
    Service service = serviceWith("old", "1");
    service = serviceWith("new", "2");
    EXPECT_EQ(service.getProperty("new"), "2");
    EXPECT_EQ(service.getProperty("old"), "");
}

TEST(Service, AssignmentToItselfChangesNothing) {
    Service service = serviceWith("a", "1");
    const Service& itself = service;
    service = itself;
    EXPECT_EQ(service.getProperty("a"), "1");
}

TEST(Environment, StartsWithoutNameAndWithIndexZero) {
    const Environment environment;
    EXPECT_EQ(environment.getName(), "");
    EXPECT_EQ(environment.getIndex(), 0);
}

TEST(Environment, NameIsReplacedAndKeptByteForByte) {
    Environment environment;
    environment.setName(" Prod ");
    EXPECT_EQ(environment.getName(), " Prod ");
    environment.setName("Test");
    EXPECT_EQ(environment.getName(), "Test");
    environment.setName(environment.getName());
    EXPECT_EQ(environment.getName(), "Test");
}

TEST(Environment, FirstServiceStoredUnderANameStays) {
    Environment environment;
    environment.setService("web", serviceWith("port", "1"));
    environment.setService("web", serviceWith("port", "2"));
    EXPECT_EQ(property(environment.getService("web"), "port"), "1");
}

TEST(Environment, ReadingAMissingServiceInsertsAnEmptyOne) {
    Environment environment;
    EXPECT_EQ(property(environment.getService("web"), "port"), "");
    environment.setService("web", serviceWith("port", "too late"));
    EXPECT_EQ(property(environment.getService("web"), "port"), "");
}

TEST(Environment, ServiceIsStoredAsACopy) {
    Environment environment;
    Service service = serviceWith("port", "1");
    environment.setService("web", service);
    service.setProperty("later", "x");
    EXPECT_EQ(property(environment.getService("web"), "later"), "");
}

TEST(Environment, ServiceNamesAreComparedByteForByte) {
    Environment environment;
    environment.setService("web", serviceWith("port", "1"));
    environment.setService("Web", serviceWith("port", "2"));
    environment.setService("", serviceWith("port", "3"));
    EXPECT_EQ(property(environment.getService("web"), "port"), "1");
    EXPECT_EQ(property(environment.getService("Web"), "port"), "2");
    EXPECT_EQ(property(environment.getService(""), "port"), "3");
}

TEST(Environment, CopiesAreDeep) {
    Environment original;
    original.setName("Prod");
    original.setIndex("7");
    original.setService("web", serviceWith("port", "1"));
    Environment copy(original);
    original.setName("changed");
    original.setIndex("8");
    original.setService("mail", serviceWith("port", "2"));
    EXPECT_EQ(copy.getName(), "Prod");
    EXPECT_EQ(copy.getIndex(), 7);
    EXPECT_EQ(property(copy.getService("web"), "port"), "1");
    EXPECT_EQ(property(copy.getService("mail"), "port"), "");
}

TEST(Environment, AssignmentReplacesEverything) {
    Environment target;
    target.setName("old");
    target.setService("old", serviceWith("port", "1"));
    Environment source;
    source.setName("new");
    source.setIndex("5");
    source.setService("new", serviceWith("port", "2"));
    target = source;
    EXPECT_EQ(target.getName(), "new");
    EXPECT_EQ(target.getIndex(), 5);
    EXPECT_EQ(property(target.getService("new"), "port"), "2");
    EXPECT_EQ(property(target.getService("old"), "port"), "");
}

TEST(Environment, AssignmentToItselfChangesNothing) {
    Environment environment;
    environment.setName("Prod");
    environment.setIndex("7");
    environment.setService("web", serviceWith("port", "1"));
    const Environment& itself = environment;
    environment = itself;
    EXPECT_EQ(environment.getName(), "Prod");
    EXPECT_EQ(environment.getIndex(), 7);
    EXPECT_EQ(property(environment.getService("web"), "port"), "1");
}

TEST(Environment, IndexFromText) {
    const struct {
        const char* text;
        int index;
    } rows[] = {
        {"7", 7},
        {"  7  ", 7},
        {"\t\n\v\f\r 7\r\n", 7},
        {"-3", -3},
        {"+3", 3},
        {"007", 7},
        {"2147483647", INT_MAX},
        {"-2147483648", INT_MIN},
        // By design: no number is 0, what follows the digits is ignored
        {"", 0},
        {"   ", 0},
        {"abc", 0},
        {"12abc", 12},
        {"1 2", 1},
        {"- 3", 0},
        {"0x10", 0},
        {"--3", 0},
        {"4294967297", std::atoi("4294967297")},
        {"99999999999999999999", std::atoi("99999999999999999999")},
    };
    const TestKit::PrivateTemp temp;
    for (const auto& row : rows) {
        SCOPED_TRACE(row.text);
        Environment environment;
        environment.setIndex(row.text);
        EXPECT_EQ(environment.getIndex(), row.index);
    }
    EXPECT_FALSE(TestKit::fileExists(TestKit::logPath())) << "none of these logs anything";
}

TEST(Environment, LaterIndexReplacesTheEarlier) {
    Environment environment;
    environment.setIndex("7");
    environment.setIndex("nine");
    EXPECT_EQ(environment.getIndex(), 0);
}

TEST(Environment, RecordsAreValuesWithoutVirtualFunctions) {
    EXPECT_FALSE(std::is_polymorphic_v<Service>);
    EXPECT_FALSE(std::is_polymorphic_v<Environment>);
    EXPECT_FALSE(std::is_polymorphic_v<EnvironmentInfo>);
    EXPECT_TRUE(std::is_copy_constructible_v<EnvironmentInfo>);
    EXPECT_TRUE(std::is_copy_assignable_v<EnvironmentInfo>);
}
