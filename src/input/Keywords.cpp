#include "input/Keywords.h"

#include <iostream>

namespace gridmoor {

Keywords::Keywords(const XmlNode& tree) { Keywords::readParameters(tree); }

void Keywords::readParameters(const XmlNode& tree) {
  for (ParameterBase* parameter : parameters_) parameter->read(tree);
  // "Discretized" names no operator of its own: it selects the finite-difference scheme's
  // word. A "Discretized" there is no word of the table and changes nothing.
  if (greenOperator.text() == "Discretized") greenOperator.parse(finiteDifference.text());
}

void Keywords::printParameters() { printParameters(std::cout); }

void Keywords::printParameters(std::ostream& out) {
  printBlock(out, Mesh, "                 Mesh parameters ", "                 End mesh parameters ");
  printBlock(out, Solution, "                 Solution parameters ",
             "                 End solution parameters ");
  printBlock(out, Postprocessing, "                 Postprocessing parameters ",
             "                 End postprocessing parameters ");
}

void Keywords::printBlock(std::ostream& out, ParameterBlock block, const std::string& heading,
                          const std::string& closing) const {
  out << '\n' << heading << '\n';
  for (const ParameterBase* parameter : parameters_) {
    if (parameter->block() == block) out << parameter->key << ' ' << parameter->format() << '\n';
  }
  out << closing << '\n';
  out.flush();
}

}  // namespace gridmoor
