#!/usr/bin/perl
# The text-tool peer of bench/compare: a regex over the slurped file.
#   perl_regex.pl A|B|C FILE        results joined by NUL on stdout
#   perl_regex.pl D FILE NEW        rewrites FILE in place, as perl -i does
# Every task ends with "matches: N" on stderr.
use strict;
use warnings;

my ($task, $file, $new) = @ARGV;
my $paragraph = qr{<p(?:\s[^>]*)?>(.*?)</p>}s;
my $target = qr{(<div\b[^>]*\sid="target"[^>]*>)(.*?)(</div>)}s;

# The plain text of a stretch of markup: CR gone, blanks trimmed, LF and TAB
# gone; then every tag dropped and the trimmed pieces joined by one blank.
sub strip_markup {
  my ($text) = @_;
  $text =~ tr/\r//d;
  $text =~ s/^ +//;
  $text =~ s/ +\z//;
  $text =~ tr/\n\t//d;
  return $text if index($text, '<') < 0;
  return join ' ', grep { length } map { s/^ +//r =~ s/ +\z//r } split /<[^>]*>/, $text, -1;
}

binmode STDOUT, ':raw';
if ($task eq 'D') {
  local ($^I, @ARGV, $/) = ('', $file);
  my $matches = 0;
  while (<>) {
    $matches += s{$target}{$1$new$3} ? 1 : 0;
    print;
  }
  print STDERR "matches: $matches\n";
  exit 0;
}

open my $in, '<:raw', $file or die "$file: $!\n";
my $doc = do { local $/; <$in> };
my $matches = 0;
if ($task eq 'C') {
  if ($doc =~ $target) { print $2; $matches = 1; }
} else {
  while ($doc =~ /$paragraph/g) {
    print "\0" if $matches++;
    print $task eq 'B' ? strip_markup($1) : $1;
  }
}
print STDERR "matches: $matches\n";
