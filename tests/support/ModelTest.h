// A test over a fresh annotation database: the data model installed on it with the first pass of
// its node cache calculator done (so that its log lines stay out of the checks), a tree builder
// over the model, and single values read through the model's own connection. Used from the test's
// thread only.
#ifndef ANNOTATIONLAYER_TEST_MODEL_TEST_H
#define ANNOTATIONLAYER_TEST_MODEL_TEST_H

#include <gtest/gtest.h>

#include <string>

#include "NodeCacheCalculator.h"
#include "SpatialiteDBDataModel.h"
#include "SqlStatement.h"
#include "TestDatabase.h"
#include "TreeBuilder.h"

class CModelTest : public ::testing::Test {
 protected:
  void SetUp() override {
    ASSERT_TRUE(db_.IsValid());
    ASSERT_TRUE(model_.Install(db_.Path()));
    ASSERT_TRUE(model_.GetNodeCacheCalculator()->WaitForFinished(10000));
    root_ = db_.RootUUID();
  }
  // The first column of the first row of `sql` as text; "<none>" when there is no row.
  std::string Scalar(const std::string& sql) {
    CSqlStatement stmt(model_.GetConnection(), sql, "");
    return stmt.StepRow() ? stmt.ColumnText(0, false) : std::string("<none>");
  }
  int Count(const std::string& sql) { return std::stoi(Scalar(sql)); }

  CTestDatabase db_;
  CSpatialiteDBDataModel model_;
  CTreeBuilder tree_{&model_};
  std::string root_;
};

#endif  // ANNOTATIONLAYER_TEST_MODEL_TEST_H
