// Usage: pedigree make SEED TRANSACTIONS >ours.jsonl
//        pedigree check <theirs.jsonl
#include <iostream>
#include <string>

#include "tests/pedigree/pedigree.h"

int main(int argc, char** argv) {
    const std::string command = argc > 1 ? argv[1] : "";
    if (command == "make" && argc == 4) {
        return pedigree::print_ours(std::cout, std::stoull(argv[2]), std::stoi(argv[3])) ? 0 : 1;
    }
    if (command == "check" && argc == 2) return pedigree::check_theirs(std::cin, std::cout) ? 0 : 1;
    std::cerr << "usage: pedigree make SEED TRANSACTIONS | check\n";
    return 2;
}
