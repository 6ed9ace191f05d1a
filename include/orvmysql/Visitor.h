#pragma once

// The visitor protocol over a condition tree. A leaf is a CCondition, an inner
// node a CConditionExpression; a visitor casts the node it receives back to
// that class to read its properties.

#include "orvmysql/Object.h"

namespace orvmysql {

class ILeafNode;
class ICompositeNode;

class ORVMYSQL_EXPORT IVisitor : public virtual IObject {
 public:
  // Called before the children of an expression; false skips the children
  // (VisitLeave still follows).
  virtual bool VisitEnter(ICompositeNode& node) = 0;
  // Called after the children of an expression; false stops the walk.
  virtual bool VisitLeave(ICompositeNode& node) = 0;
  // Called for each condition; false stops the walk.
  virtual bool Visit(ILeafNode& node) = 0;
};

class ORVMYSQL_EXPORT ILeafNode : public virtual IObject {
 public:
  // Calls visitor.Visit with this node and returns its result.
  virtual bool Accept(IVisitor& visitor) = 0;
};

class ORVMYSQL_EXPORT ICompositeNode : public virtual IObject {
 public:
  // Walks this node: VisitEnter, then the nested expressions, then the
  // conditions, then VisitLeave. Returns false as soon as any call does.
  virtual bool Accept(IVisitor& visitor) = 0;
};

}  // namespace orvmysql
