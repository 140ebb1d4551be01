namespace kelvo {}
