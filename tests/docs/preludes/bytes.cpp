const std::string bytes = [] {
    std::ifstream page("invite.sip"); // written from the guide
    std::string text;
    for (std::string line; std::getline(page, line);) {
        text += line + "\r\n";
    }
    return text;
}();
