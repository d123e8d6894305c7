# stub: rake 13.0.6 ruby lib
s.name = "a".freeze
s.version = "1"
