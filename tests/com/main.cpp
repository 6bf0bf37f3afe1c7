#include "com/registration.h"
#include "tests/com/com_kit.h"

// Runs the tests in an apartment, with the component registered for the machine.
int main(int argc, char** argv) {
  ::testing::InitGoogleTest(&argc, argv);
  const rebate::com::Apartment apartment;
  rebate::com::Register(rebate::com::Audience::Machine, REBATE_LIBRARY_FILE);
  const int status = RUN_ALL_TESTS();
  rebate::com::Unregister(rebate::com::Audience::Machine);
  return status;
}
