# Input filter of Doxygen: members whose kind of name says all get the one docstring that each of
# them would repeat. What has a docstring of its own keeps it; whatever else has none is an error.
function remark(line) {
  if (line ~ /KexType& .*_?fwkType\(\)/) return "The type's record."
  if (line ~ / = (default|delete);$/ || line ~ / operator *[^ ]+ ?[^ ]*\(/) return "As usual."
  if (line ~ /^ +((explicit|constexpr) )*[A-Z][A-Za-z0-9]*\(/) return "Makes one from its parts."
  if (line ~ / new[A-Z][A-Za-z0-9]*\(/) return "Makes the attribute's object, without setting it."
  if (line ~ / [a-z][A-Za-z0-9]*Is\(/) return "Sets the attribute."
  if (line ~ / [a-z][A-Za-z0-9]*Del(All)?\(/) return "Removes the attribute, or members of it."
  if (line ~ / [a-z][A-Za-z0-9]*QEnq\(/) return "Puts a member at the end of the queue."
  if (line ~ / on[A-Z][A-Za-z0-9]*\(\)/) return "Called when the notifier's attribute of this name changed."
  if (line ~ / handle[A-Z][A-Za-z0-9]*\(/ && line !~ / override/) return "Called when that happens."
  if (line ~ / throw[A-Z][A-Za-z0-9]*\(/) return "Throws the exception of that name."
  if (line ~ /^ +[^ (].* [a-z][A-Za-z0-9]*\([A-Z]?[a-zA-Z]*( id)?\) const( noexcept)?( = 0)?( \{|;)/) return "The attribute."
  if (line ~ /^ +using [A-Z][A-Za-z0-9]* = /) return "Short for the type."
  if (line ~ /^ +[A-Za-z][^()]* [*&]?[a-z][A-Za-z0-9]*( = [^;]*|\{\})?;/ && line !~ /return/) return "As its name says."
  return ""
}
{
  text = isDocumented || /\/\// ? "" : remark($0)
  if (text != "") sub(/^ */, "&/** " text " */ ")
  print
  isDocumented = /^ *\/\/\// || (isDocumented && /^ *(template <|requires )/)
}
