// Stands in front of the operating system in the test program: makes what the log asks about its
// file come out differently.
#ifndef MV_TESTS_UNIT_SYSTEMINTERPOSER_H
#define MV_TESTS_UNIT_SYSTEMINTERPOSER_H

namespace SystemInterposer {

struct Settings {
    bool failExamine = false;    ///< fstat fails
    bool failTruncate = false;   ///< ftruncate fails
    bool isAnotherUser = false;  ///< geteuid gives the number of a user who owns no file
};

extern Settings settings;

}  // namespace SystemInterposer

#endif
