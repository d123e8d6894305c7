"""Turns the comments of include/zav.h, the help of the programs and the pages of docs/ into man pages and a site."""
