#include <gtest/gtest.h>

#include "orvmysql/Error.h"

int main(int argc, char** argv) {
  ::testing::InitGoogleTest(&argc, argv);
  try {
    return RUN_ALL_TESTS();
  } catch (const std::exception& e) {
    std::cerr << "live tests aborted: " << e.what() << "\n";
    return 1;
  }
}
