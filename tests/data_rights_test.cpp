#include <gtest/gtest.h>

#include <thread>

#include "platform/automation/class_objects.h"
#include "platform/automation/conversion.h"
#include "platform/automation/dispatch.h"
#include "platform/login/login_components.h"
#include "platform/login/process_cache.h"
#include "platform/login_standins/host_cache.h"
#include "platform/login_standins/login_standins.h"
#include "service/data_rights.h"
#include "tests/test_account.h"

namespace rebate {
namespace {

using Events = std::vector<Text>;

const Events kAskedWithSharedProperties = {"TALMtsCacheService.CacheFacade.GetItem",
                                           "TALPropsMgr.ShareProps.GetProperty", "TALPropsMgr.ShareProps.GetProperty",
                                           "TALEBSBase.SecurityInfo.NeedAutorized"};

class DataRights : public testing::Test {
 protected:
  DataRights() {
    RegisterLoginStandIns();
    PutProcessCache(NewProcessCache());
  }
  ~DataRights() override {
    DropProcessCache();
    SetLoginAnswers({});
  }

  // NeedAuthrize so many times on a fresh thread: each answer, and the component calls of each.
  static std::vector<std::pair<bool, Events>> AskOnNewThread(int times) {
    std::vector<std::pair<bool, Events>> answers;
    std::thread([&] {
      Trace trace;
      for (int i = 0; i < times; ++i) {
        const bool answer = NeedAuthrize();
        answers.emplace_back(answer, trace.Take());
      }
    }).join();
    return answers;
  }
};

TEST_F(DataRights, AsksTheSecurityComponentOnceAThread) {
  SetLoginAnswers({.need_authrize = true});
  SetProcessCache("NeedAuthrize", false);  // of no account to a thread's first call
  auto answers = AskOnNewThread(2);
  EXPECT_EQ(answers[0], std::pair(true, kAskedWithSharedProperties));
  EXPECT_EQ(answers[1], std::pair(true, Events{}));
  SetLoginAnswers({.need_authrize = false});
  answers = AskOnNewThread(2);
  EXPECT_EQ(answers[0], std::pair(false, kAskedWithSharedProperties));
  EXPECT_EQ(answers[1], std::pair(false, Events{}));  // a cached False is a value
}

TEST_F(DataRights, TriesAgainAfterAFailure) {
  SetLoginAnswers({.need_authrize = true, .failing = {"TALEBSBase.SecurityInfo"}});
  auto answers = AskOnNewThread(2);
  EXPECT_EQ(answers[1], std::pair(false, Events{}));
  SetLoginAnswers({.need_authrize = true});
  DropProcessCache();
  answers = AskOnNewThread(2);
  EXPECT_EQ(answers[0], std::pair(false, kAskedWithSharedProperties));
  EXPECT_EQ(answers[1], answers[0]);
}

TEST_F(DataRights, AsksAgainWhereTheCacheOrTheFirstAnswerIsLost) {
  SetLoginAnswers({.need_authrize = true});
  std::thread([] {
    EXPECT_TRUE(NeedAuthrize());
    PutProcessCache(NewProcessCache());
    EXPECT_TRUE(NeedAuthrize()) << "an emptied cache is filled again";
  }).join();
  SetLoginAnswers({.failing = {"TALEBSBase.SecurityInfo"}});
  std::thread([] {
    EXPECT_FALSE(NeedAuthrize());
    EXPECT_FALSE(NeedAuthrize()) << "a thread whose question failed doesn't take another one's answer";
  }).join();
}

TEST_F(DataRights, ReadsTheItemClassesThroughTheCache) {
  SetLoginAnswers({.authrize_item_class_list = "8,1"});
  Trace trace;
  EXPECT_EQ(AuthrizeItemClassList(), "8,1");
  EXPECT_EQ(trace.Take(), (Events{"TALEBCGLView.GLData.GetAuthItemClassList"}));
  SetLoginAnswers({.authrize_item_class_list = "4"});
  EXPECT_EQ(AuthrizeItemClassList(), "8,1");
  EXPECT_TRUE(trace.Take().empty());
  DropProcessCache();
  EXPECT_EQ(AuthrizeItemClassList(), "4");
  SetLoginAnswers({.failing = {"TALEBCGLView.GLData"}});
  EXPECT_THROW(AuthrizeItemClassList(), Error);
}

TEST_F(DataRights, ReadsPropertiesFromWhereTheLoginLies) {
  struct {
    Long outer_login;
    const char* name;
    Text value;
    Text source;  // of the value, empty where none is touched
  } const cases[] = {
      {0, "PropsString", "props", "TALPropsMgr.ShareProps.GetProperty"},
      {0, "Unlisted", "", "TALPropsMgr.ShareProps.GetProperty"},
      {1, "PropsString", "props", "TALMtsCacheService.CacheFacade.GetItem"},
      {1, "propsstring", "", ""},
      {2, "PropsString", "", ""},
  };
  Trace trace;
  for (const auto& one : cases) {
    SetLoginAnswers({.props_string = "props", .outer_login = one.outer_login});
    trace.Take();
    EXPECT_EQ(ToText(GetProperty(one.name)), one.value) << one.name;
    Events expected = {"TALMtsCacheService.CacheFacade.GetItem"};
    if (!one.source.empty()) expected.insert(expected.end(), 2, one.source);
    EXPECT_EQ(trace.Take(), expected) << one.name;
  }
  SetLoginAnswers({.props_string = "props", .outer_login = 1, .failing = {"TALMtsCacheService.CacheFacade"}});
  EXPECT_EQ(ToText(GetProperty("PropsString")), "props");
  SetLoginAnswers({.failing = {"TALMtsCacheService.CacheFacade", "TALPropsMgr.ShareProps"}});
  EXPECT_TRUE(GetProperty("PropsString").IsEmpty());
}

TEST_F(DataRights, ReadsTheProcessCacheWithADefault) {
  EXPECT_EQ(GetProcessCache("key", "default"), Variant("default"));
  EXPECT_TRUE(GetProcessCache("key").IsEmpty());
  SetProcessCache("key", 5);
  EXPECT_EQ(GetProcessCache("key", "default"), Variant(5));
  DropProcessCache();
  EXPECT_EQ(GetProcessCache("key", "default"), Variant("default"));
  EXPECT_THROW(SetProcessCache("key", 5), Error);
}

class HostSecurity : public Object {
 public:
  bool NeedAutorized(const Variant& props) { return ToText(props) == "of the host"; }
  const MemberTable& Members() const override {
    static const MemberTable members{dispatch::Method("NeedAutorized", &HostSecurity::NeedAutorized, {"Props"})};
    return members;
  }
};

// Answers with an object first and a plain value then.
class FickleProps : public Object {
 public:
  Variant GetProperty(const Text&, Long) { return asked_++ == 0 ? Variant(Row({})) : Variant("plain"); }
  const MemberTable& Members() const override {
    static const MemberTable members{dispatch::Method("GetProperty", &FickleProps::GetProperty, {"Name", "ProcessID"})};
    return members;
  }

 private:
  int asked_ = 0;
};

TEST_F(DataRights, TakesNoPropertyThatChangesItsKind) {
  RegisterClass(login_component::kShareProps, [] { return New<FickleProps>(); });
  EXPECT_TRUE(GetProperty("PropsString").IsEmpty());
  RegisterClass(login_component::kShareProps, nullptr);
  RegisterLoginStandIns();
}

TEST_F(DataRights, ReachesAComponentThatTheHostRegistered) {
  RegisterClass(login_component::kSecurityInfo, [] { return New<HostSecurity>(); });
  RegisterLoginStandIns();
  SetLoginAnswers({.props_string = "of the host"});
  EXPECT_TRUE(AskOnNewThread(1)[0].first);
  RegisterClass(login_component::kSecurityInfo, nullptr);
  RegisterLoginStandIns();
}

}  // namespace
}  // namespace rebate
