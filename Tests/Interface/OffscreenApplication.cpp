// The one application object of all tests of the real interface, without a screen.

#include <QGuiApplication>
#include <memory>

#include <gtest/gtest.h>

namespace {

class OffscreenApplication : public testing::Environment {
  public:
    void SetUp() override {
        qputenv("QT_QPA_PLATFORM", "offscreen");
        qputenv("QT_QUICK_BACKEND", "software");
        application_ = std::make_unique<QGuiApplication>(argumentCount_, arguments_);
    }
    void TearDown() override { application_.reset(); }

  private:
    char name_[16] = "interface-tests";
    int argumentCount_ = 1;
    char* arguments_[2] = {name_, nullptr};
    std::unique_ptr<QGuiApplication> application_;
};

const auto* const environment = testing::AddGlobalTestEnvironment(new OffscreenApplication);

}  // namespace
